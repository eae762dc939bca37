#!/usr/bin/env bash
# Runs one Windows program in our own Wine prefix; CTest uses it as the emulator.
# The error stream goes to a file as well, whose name the program finds in QORLIX_STDERR_FILE:
# that is where Wine shows what a program reported to the event log.
#
# With QORLIX_DISPLAY=1 the program can show windows: it runs on a virtual screen. Wine decides when
# its server starts whether there is a screen, so such programs have a prefix and a server of their
# own, which ends with them; they take turns.
#
# With QORLIX_LANE=NAME the program runs in a prefix of that name: one machine has one server and one
# registry, so programs that need them take turns within a lane, and the lanes run side by side.
#
# With QORLIX_COUNTED=1 the program can count: Wine's server writes what it is asked for to a file
# while it runs, whose name the program finds in QORLIX_SERVER_LOG. Another server of the prefix ends
# before, and this one behind it.
set -u
if [ -n "${QORLIX_LANE:-}" ]; then
  root=$(cd "$(dirname "$0")/.." && pwd)
  mkdir -p "$root/build"
  export QORLIX_WINEPREFIX=${QORLIX_WINEPREFIX:-$root/build/wine}-$QORLIX_LANE
  unset QORLIX_LANE
fi
if [ "${QORLIX_DISPLAY:-}" = 1 ]; then
  root=$(cd "$(dirname "$0")/.." && pwd)
  mkdir -p "$root/build"
  export QORLIX_WINEPREFIX=${QORLIX_WINEPREFIX:-$root/build/wine}-display QORLIX_DISPLAY=open
  exec flock -o "$QORLIX_WINEPREFIX.lock" xvfb-run -a -s '-screen 0 1024x768x24' "$0" "$@"
fi

. "$(dirname "$0")/wine-env.sh"
# A crash ends a program, rather than asking somebody about it who is not there.
[ "${QORLIX_DISPLAY:-}" != open ] || WINEDLLOVERRIDES="$WINEDLLOVERRIDES;winedbg.exe=d"
if [ "${QORLIX_COUNTED:-}" = 1 ]; then
  wine_prepare
  wine_stop
  wineserver -w
  QORLIX_SERVER_LOG=$(mktemp "${TMPDIR:-/tmp}/qorlix-server.XXXXXX")
  export QORLIX_SERVER_LOG
  wineserver -d -p 2>>"$QORLIX_SERVER_LOG" >/dev/null </dev/null
fi
if [ "${QORLIX_DISPLAY:-}" = open ]; then wine_prepare; else wine_start; fi
if [ "${QORLIX_DISPLAY:-}" = open ] && [ ! -e "$WINEPREFIX/.qorlix-unmanaged" ]; then
  # Nothing manages the windows of this screen; Wine would wait two seconds for it at every close.
  wine reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d N /f >/dev/null 2>&1 &&
    touch "$WINEPREFIX/.qorlix-unmanaged"
fi

QORLIX_STDERR_FILE=$(mktemp "${TMPDIR:-/tmp}/qorlix-stderr.XXXXXX")
export QORLIX_STDERR_FILE
wine "$@" 2>>"$QORLIX_STDERR_FILE"
code=$?
grep -av ':trace:heap:' "$QORLIX_STDERR_FILE" >&2
rm -f "$QORLIX_STDERR_FILE"
if [ "${QORLIX_COUNTED:-}" = 1 ]; then
  wine_stop
  wineserver -w
  rm -f "$QORLIX_SERVER_LOG"
fi
[ "${QORLIX_DISPLAY:-}" != open ] || wine_stop
exit $code

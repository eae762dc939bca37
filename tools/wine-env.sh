# Sourced by the scripts that run Windows programs: one 32-bit Wine prefix of our own in the build
# tree, and functions to make it, keep its server alive between programs, and stop that server only.
QORLIX_ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
export WINEPREFIX=${QORLIX_WINEPREFIX:-$QORLIX_ROOT/build/wine}
export WINEARCH=win32
export WINEDLLOVERRIDES="mscoree,mshtml=;winemenubuilder.exe=d"
# Event-log reports are only visible on the error stream; tests read them there.
export WINEDEBUG=${WINEDEBUG:--all,err+eventlog}

# Makes the prefix once; a half-made one, left by an interruption, is made anew.
wine_prepare() {
  if [ ! -e "$WINEPREFIX/.qorlix-ready" ]; then
    rm -rf "$WINEPREFIX"
    mkdir -p "$WINEPREFIX"
    wineboot -i >/dev/null 2>&1 || true
    wineserver -w
    # Of a prefix that was disturbed while it was made, not even this runs.
    if ! wine cmd /c exit >/dev/null 2>&1 </dev/null; then
      echo "Wine could not make its prefix $WINEPREFIX; delete it and try again" >&2
      return 1
    fi
    touch "$WINEPREFIX/.qorlix-ready"
  fi
}

# A server that stays makes the next program start in 0.05 s instead of 2.5 s. The first program
# brings Wine's own services up, which stay as well: they must not inherit anybody's pipe, or who
# reads that pipe waits for its end for ever.
wine_start() {
  wine_prepare
  wineserver -p >/dev/null 2>&1 || true
  wine cmd /c exit >/dev/null 2>&1 </dev/null || true
}

wine_stop() {
  wineserver -k >/dev/null 2>&1 || true
}

# The same for the prefixes of the test lanes beside it.
wine_stop_all() {
  local prefix
  for prefix in "$WINEPREFIX" "$WINEPREFIX"-*/; do
    [ ! -d "$prefix" ] || WINEPREFIX=${prefix%/} wineserver -k >/dev/null 2>&1 || true
  done
}

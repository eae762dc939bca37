#!/usr/bin/env bash
# Puts the stand-ins of the installation and maintenance actions where the server looks for them:
# into the system directory of our Wine prefix (of the one with a screen, with QORLIX_DISPLAY=1).
# usage: tools/place-standins.sh [--noexport | --remove] [LIBRARY ...]
#   LIBRARY     such as ringdiag.dll; all of them by default
#   --noexport  the copies that lack the entry points
#   --remove    takes the libraries away, and the scripts beside them
set -euo pipefail
prefix=${QORLIX_WINEPREFIX:-$(dirname "$0")/../build/wine}
[ "${QORLIX_DISPLAY:-}" != 1 ] || prefix=$prefix-display
prefix=$(realpath -m "$prefix")
QORLIX_WINEPREFIX=$prefix
. "$(dirname "$0")/wine-env.sh"

from=$QORLIX_ROOT/build/windows-x86/bin/standins
to=$WINEPREFIX/drive_c/windows/system32
all=(drvinstx.dll ipcfgx.dll onlpanelx.cpl ringdiag.dll rstagent9.dll sampledev.dll)

usage() {
  sed -n '4,7s/^# //p' "$0" >&2
  exit 2
}

remove=
libraries=()
for word; do
  case $word in
    --noexport) from=$QORLIX_ROOT/build/windows-x86/bin/standins/noexport ;;
    --remove) remove=1 ;;
    -*) usage ;;
    *)
      [[ " ${all[*]} " == *" $word "* ]] || { echo "place-standins: no stand-in $word" >&2; usage; }
      libraries+=("$word")
      ;;
  esac
done
[ ${#libraries[@]} -gt 0 ] || libraries=("${all[@]}")

wine_prepare
for library in "${libraries[@]}"; do
  if [ -n "$remove" ]; then
    rm -f "$to/$library" "$to/${library%.*}.ini"
  else
    if [ ! -e "$from/$library" ]; then
      echo "place-standins: not built yet; tools/build.sh windows-x86:standins" >&2
      exit 1
    fi
    # Away with the old file first: one that a program has loaded keeps what it had.
    rm -f "$to/$library"
    cp "$from/$library" "$to/$library"
  fi
done

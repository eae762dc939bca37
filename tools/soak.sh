#!/usr/bin/env bash
# Keeps the server as built busy with a realistic mix of requests, under Wine, and looks whether it
# grows: the samples go to build/soak.csv, the plot to docs/soak.svg (to build/soak.svg when it is
# less than a million requests).
# usage: tools/soak.sh [REQUESTS]     a million unless told
set -euo pipefail
cd "$(dirname "$0")/.."
requests=${1:-1000000}
[[ $requests =~ ^[0-9]+$ ]] || { sed -n '5s/^# //p' "$0" >&2; exit 2; }

tools/build.sh windows-x86:soak >&2
rm -f build/soak.csv
code=0
QORLIX_LANE=soak WINEDEBUG=-all tools/wine-run.sh build/windows-x86/bin/soak.exe \
  --requests "$requests" --csv "Z:$PWD/build/soak.csv" || code=$?
plot=build/soak.svg
# The page shows whole runs only.
if [ "$requests" -ge 1000000 ] && [ "$code" = 0 ]; then plot=docs/soak.svg; fi
tools/plot_soak.py build/soak.csv "$plot" || code=1
echo "plot: $plot"
exit "$code"

#!/usr/bin/env bash
# Counts what a round trip costs in requests to Wine's server, for product and yardstick, or what a
# trace line costs, for the facility and its floors. Prints a table. Unlike times, the counts hardly
# depend on the machine or on what else it does.
#
#   bench/count-requests.sh DIRECTORY_WITH_THE_PROGRAMS [ROUND_TRIPS]
#   bench/count-requests.sh --trace DIRECTORY_WITH_THE_PROGRAMS [LINES]
#
# Wine's server runs in the foreground with its debug log for this, in a prefix of its own.
set -euo pipefail
trace=
if [ "${1:-}" = --trace ]; then
  trace=yes
  shift
fi
bin=$(cd "$1" && pwd)
count=${2:-512}
cpu=${QORLIX_BENCH_CPU:-$(($(nproc) - 1))}
bench=$(cd "$(dirname "$0")" && pwd)

QORLIX_WINEPREFIX=${QORLIX_WINEPREFIX:-$(dirname "$bin")/bench-wine}
export QORLIX_WINEPREFIX
. "$bench/../tools/wine-env.sh"
export WINEDEBUG=-all
wine_prepare

work=$(mktemp -d)
server=
cleanUp() {
  wine_stop
  if [ -n "$server" ]; then wait "$server" || true; fi
  rm -rf "$work"
}
trap cleanUp EXIT

wine_stop
wineserver -w
taskset -c "$cpu" wineserver -f -d -p 2>"$work/log" &
server=$!
cd "$bin"
if [ -n "$trace" ]; then
  taskset -c "$cpu" wine trace_bench.exe --count "$count"
else
  taskset -c "$cpu" wine pipeload.exe --server QorlixSRV.exe --yardstick yardstick.exe \
    --count "$count"
fi
wine_stop
wait "$server" || true
server=
if [ -n "$trace" ]; then
  awk -v lines="$count" -f "$bench/count-trace-requests.awk" "$work/log"
else
  awk -v roundTrips="$count" -f "$bench/count-requests.awk" "$work/log"
fi

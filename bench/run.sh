#!/usr/bin/env bash
# Builds the product as shipped and measures it: the server against the yardstick server, and a line
# of the trace facility against its floors. Prints the tables as Markdown or, when FILE is given,
# puts them into it: in place of all that stands behind its line "## Results" (with --trace, of all
# from the line "### Trace lines" on), and as the whole of a file that has no such line.
#
#   bench/run.sh [--quick] [--trace] [FILE]
#
#   --quick   fewer and shorter bursts; good for a look, not for a verdict
#   --trace   the trace facility alone
#
# Everything that takes part, Wine's server included, runs on one processor: then the time of a
# burst is the work of all of them added up, and not the luck of a scheduler. QORLIX_BENCH_CPU
# chooses the processor (the last one unless told), QORLIX_BUILD another build directory.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
cpu=${QORLIX_BENCH_CPU:-$(($(nproc) - 1))}
build=${QORLIX_BUILD:-$root/build/windows-x86}
quick=()
traceOnly=
file=
for argument in "$@"; do
  case $argument in
    --quick) quick=(--quick) ;;
    --trace) traceOnly=yes ;;
    -*) echo "run.sh: unknown option $argument" >&2; exit 1 ;;
    *) file=$(realpath -m "$argument") ;;
  esac
done

cd "$root"
hasTraceBench() { cmake --build "$build" --target help | grep '^trace_bench:' >/dev/null; }
# Configures again when the peer's headers may have come since.
{ [ -e "$build/build.ninja" ] && hasTraceBench; } || cmake --preset windows-x86 -B "$build" >&2
targets=(QorlixSRV boardsvc32 pipeload)
[ -n "$traceOnly" ] || targets+=(yardstick codec_bench)
withTrace=
if hasTraceBench; then
  withTrace=yes
  targets+=(trace_bench)
else
  echo "run.sh: trace_bench is left out: spdlog's headers are missing (Debian: libspdlog-dev)" >&2
  [ -z "$traceOnly" ] || exit 1
fi
cmake --build "$build" --target "${targets[@]}" >&2

QORLIX_WINEPREFIX=${QORLIX_WINEPREFIX:-$build/bench-wine}
export QORLIX_WINEPREFIX
. "$root/tools/wine-env.sh"
export WINEDEBUG=-all
wine_prepare

importsOf() { i686-w64-mingw32-objdump -p "$1" | sed -n 's/.*DLL Name: //p' | tr A-Z a-z | sort; }

# Imports cost start-up time and memory, so the comparison is fair only when they are the same.
checkImports() {
  if ! diff <(importsOf QorlixSRV.exe) <(importsOf yardstick.exe) >&2; then
    echo "run.sh: the yardstick does not import what the product imports" >&2
    return 1
  fi
}

startWine() {
  wine_stop
  wineserver -w
  taskset -c "$cpu" wineserver -p
}

stopWine() {
  wine_stop
  wineserver -w
}

onThatProcessor() { taskset -c "$cpu" wine "$@" | tr -d '\r'; }

where() {
  echo "Measured on one processor of $(sed -n 's/^model name[^:]*: //p' /proc/cpuinfo | head -1)," \
       "$(wine --version | cut -d' ' -f1)."
}

measureServer() {
  checkImports
  startWine
  where
  echo
  echo "### Time, start-up and memory"
  echo
  onThatProcessor pipeload.exe --server QorlixSRV.exe --yardstick yardstick.exe \
    ${quick[@]+"${quick[@]}"}
  echo
  echo "### Registry commands beside the same registry work in-process"
  echo
  onThatProcessor pipeload.exe --server QorlixSRV.exe --yardstick yardstick.exe --registry \
    ${quick[@]+"${quick[@]}"}
  echo
  echo "### Codec alone"
  echo
  onThatProcessor codec_bench.exe
  stopWine

  echo
  echo "### Requests to Wine's server for one round trip"
  echo
  "$root/bench/count-requests.sh" "$build/bin"
}

measureTrace() {
  startWine
  echo "### Trace lines"
  echo
  where
  echo
  onThatProcessor trace_bench.exe ${quick[@]+"${quick[@]}"}
  echo
  onThatProcessor pipeload.exe --server QorlixSRV.exe --tracing ${quick[@]+"${quick[@]}"}
  stopWine

  echo
  echo "### Requests to Wine's server for one trace line"
  echo
  "$root/bench/count-requests.sh" --trace "$build/bin"
}

measure() {
  cd "$build/bin"
  trap wine_stop EXIT
  if [ -z "$traceOnly" ]; then
    measureServer
    [ -z "$withTrace" ] || echo
  fi
  if [ -n "$withTrace" ]; then measureTrace; fi
}

if [ -z "$file" ]; then
  (measure)
  exit
fi

# The old file stays until the new tables are whole.
tables=$(mktemp)
trap 'rm -f "$tables"' EXIT
(measure) >"$tables"
if [ -n "$traceOnly" ] && [ -e "$file" ] && grep -q '^### Trace lines$' "$file"; then
  { sed '/^### Trace lines$/,$d' "$file"; cat "$tables"; } >"$file.new"
  mv "$file.new" "$file"
elif [ -z "$traceOnly" ] && [ -e "$file" ] && grep -q '^## Results$' "$file"; then
  { sed '/^## Results$/q' "$file"; echo; cat "$tables"; } >"$file.new"
  mv "$file.new" "$file"
elif [ -n "$traceOnly" ] && [ -e "$file" ]; then
  echo "run.sh: $file has no line \"### Trace lines\"" >&2
  cat "$tables"
  exit 1
else
  cat "$tables" >"$file"
fi

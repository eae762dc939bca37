#!/usr/bin/env bash
# Builds the product as shipped and measures it against the yardstick server. Prints the tables as
# Markdown or, when FILE is given, puts them into it: in place of all that stands behind its line
# "## Results", and as the whole of a file that has no such line.
#
#   bench/run.sh [--quick] [FILE]
#
# Everything that takes part, Wine's server included, runs on one processor: then the time of a
# burst is the work of all of them added up, and not the luck of a scheduler. QORLIX_BENCH_CPU
# chooses the processor (the last one unless told), QORLIX_BUILD another build directory.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
cpu=${QORLIX_BENCH_CPU:-$(($(nproc) - 1))}
build=${QORLIX_BUILD:-$root/build/windows-x86}
quick=()
file=
for argument in "$@"; do
  case $argument in
    --quick) quick=(--quick) ;;
    -*) echo "run.sh: unknown option $argument" >&2; exit 1 ;;
    *) file=$(realpath -m "$argument") ;;
  esac
done

cd "$root"
[ -e "$build/build.ninja" ] || cmake --preset windows-x86 -B "$build" >&2
cmake --build "$build" --target QorlixSRV boardsvc32 yardstick pipeload codec_bench >&2

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

measure() {
  cd "$build/bin"
  checkImports
  trap wine_stop EXIT
  wine_stop
  wineserver -w
  taskset -c "$cpu" wineserver -p

  echo "Measured on one processor of $(sed -n 's/^model name[^:]*: //p' /proc/cpuinfo | head -1)," \
       "$(wine --version | cut -d' ' -f1)."
  echo
  echo "### Time, start-up and memory"
  echo
  taskset -c "$cpu" wine pipeload.exe --server QorlixSRV.exe --yardstick yardstick.exe \
    ${quick[@]+"${quick[@]}"} | tr -d '\r'
  echo
  echo "### Codec alone"
  echo
  taskset -c "$cpu" wine codec_bench.exe | tr -d '\r'
  wine_stop
  wineserver -w

  echo
  echo "### Requests to Wine's server for one round trip"
  echo
  "$root/bench/count-requests.sh" "$build/bin"
}

if [ -z "$file" ]; then
  (measure)
  exit
fi

# The old file stays until the new tables are whole.
tables=$(mktemp)
trap 'rm -f "$tables"' EXIT
(measure) >"$tables"
if [ -e "$file" ] && grep -q '^## Results$' "$file"; then
  { sed '/^## Results$/q' "$file"; echo; cat "$tables"; } >"$file.new"
  mv "$file.new" "$file"
else
  cat "$tables" >"$file"
fi

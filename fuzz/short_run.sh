#!/usr/bin/env bash
# A fuzzer's corpus and some inputs more, the same ones every time. What it finds new is not kept; an
# input that fails is left in fuzz/ of the build directory.
# usage: short_run.sh RUNS FUZZER
set -euo pipefail
runs=$1
program=$2
name=$(basename "$program" Fuzzer)
here=$(cd "$(dirname "$0")" && pwd)
corpus=$here/corpus/$name
findings=$(dirname "$(dirname "$program")")/fuzz/
mkdir -p "$findings"
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
files=$(find "$corpus" -type f | wc -l)
[ "$files" -gt 0 ] || { echo "$corpus is empty" >&2; exit 1; }
exec 2>&1
"$program" -seed=1 -runs=$((files + runs)) -max_len=16384 -dict="$here/protocol.dict" \
  -artifact_prefix="$findings$name-" -print_final_stats=1 "$scratch" "$corpus"

#!/usr/bin/env bash
# Runs fuzzers for a while each, from their corpora on, and prints a table of what came of it.
# usage: tools/fuzz.sh [SECONDS] [TARGET...]      60 seconds each and all of them, unless told
# TARGET is a name below fuzz/corpus, as Request or Connection.
#        tools/fuzz.sh --merge [TARGET...]      takes what was found new into the corpora
#
# What is found new stays in build/fuzz/corpus and is where the next run goes on. An input that
# fails is kept as build/fuzz/TARGET-crash-... (or -leak-, -timeout-, -oom-), with its log beside it.
# The exit code is 0 only if there was none.
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=60
merge=no
if [ "${1:-}" = --merge ]; then
  merge=yes
  shift
fi
if [[ ${1:-} =~ ^[0-9]+$ ]]; then
  seconds=$1
  shift
fi
targets=("$@")
[ ${#targets[@]} -gt 0 ] || mapfile -t targets < <(ls fuzz/corpus)
for target in "${targets[@]}"; do
  if [ ! -d "fuzz/corpus/$target" ]; then
    echo "fuzz.sh: there is no target $target" >&2
    sed -n '3,5s/^# //p' tools/fuzz.sh >&2
    exit 2
  fi
done

programs=$(printf '%sFuzzer,' "${targets[@]}")
tools/build.sh "native-asan:${programs%,}"

# The smallest corpus that reaches what both reach; long inputs that add little are left out.
if [ "$merge" = yes ]; then
  for target in "${targets[@]}"; do
    corpus=fuzz/corpus/$target
    mkdir -p "build/fuzz/corpus/$target" build/fuzz/merged
    rm -rf "build/fuzz/merged/$target"
    mkdir "build/fuzz/merged/$target"
    # Spellings of a path differ in values rather than in branches.
    profile=0
    [ "$target" != RegistryPolicy ] || profile=1
    build/native-asan/bin/"${target}Fuzzer" -merge=1 -use_value_profile=$profile -max_len=16384 \
      "build/fuzz/merged/$target" "$corpus" "build/fuzz/corpus/$target" \
      >"build/fuzz/$target-merge.log" 2>&1
    rm -rf "$corpus"
    cp -r "build/fuzz/merged/$target" "$corpus"
    echo "$corpus: $(find "$corpus" -type f | wc -l) files, $(du -sb "$corpus" | cut -f1) bytes"
  done
  exit 0
fi

last() {  # the last number behind a word of the log
  grep -ao "$1[: ]*[0-9]*" "$2" | tail -1 | grep -o '[0-9]*$' || echo 0
}

echo
echo "| target | runs | runs/s | edges covered | corpus | findings |"
echo "|---|---:|---:|---:|---:|---:|"
found=0
for target in "${targets[@]}"; do
  mkdir -p "build/fuzz/corpus/$target"
  log=build/fuzz/$target.log
  code=0
  build/native-asan/bin/"${target}Fuzzer" -max_total_time="$seconds" -max_len=16384 \
    -dict=fuzz/protocol.dict -artifact_prefix="build/fuzz/$target-" -print_final_stats=1 \
    "build/fuzz/corpus/$target" "fuzz/corpus/$target" >"$log" 2>&1 || code=$?
  findings=$((code == 0 ? 0 : 1))
  found=$((found + findings))
  echo "| $target | $(last stat::number_of_executed_units "$log")" \
    "| $(last stat::average_exec_per_sec "$log") | $(last cov "$log") | $(last corp "$log")" \
    "| $findings |"
  [ "$code" -eq 0 ] || grep -a 'ERROR: \|runtime error: \|Test unit written' "$log" >&2 || true
done
[ "$found" -eq 0 ]

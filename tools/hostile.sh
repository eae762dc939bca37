#!/usr/bin/env bash
# Attacks the server as built, over its pipe, under Wine.
#
#   tools/hostile.sh [--processes N] [--markdown] [SECONDS]
#     every way of being hostile for SECONDS (3 unless told) and as long in peace before it, while
#     one client behaves; prints a table and fails when a row does. The 63 attackers are one
#     process, or N (1 to 63)
#   tools/hostile.sh --grammar [SECONDS] [--seed N]
#     requests out of the commands' grammar, right and damaged, for SECONDS (30 unless told), while
#     the system checks the server's heap; the same seed (1 unless told) makes the same requests
set -euo pipefail
cd "$(dirname "$0")/.."

usage() {
  sed -n '4,10s/^# \{0,1\}//p' tools/hostile.sh >&2
  exit 2
}

grammar=
seconds=
seed=1
processes=1
markdown=()
while [ $# -gt 0 ]; do
  case $1 in
    --grammar) grammar=yes ;;
    --markdown) markdown=(--markdown) ;;
    --processes) processes=${2:-}; shift; [[ $processes =~ ^[0-9]+$ ]] || usage ;;
    --seed) seed=${2:-}; shift; [[ $seed =~ ^[0-9]+$ ]] || usage ;;
    *) [[ $1 =~ ^[0-9]+$ ]] || usage; seconds=$1 ;;
  esac
  shift
done

# A prefix of its own for each, so that no other test's server is in the way.
if [ -n "$grammar" ]; then
  tools/build.sh windows-x86:e2e_grammar_test >&2
  export QORLIX_GRAMMAR_SECONDS=${seconds:-30} QORLIX_GRAMMAR_SEED=$seed
  export QORLIX_LANE=grammar WINEDEBUG=-all,err+heap
  exec tools/wine-run.sh build/windows-x86/bin/e2e_grammar_test.exe
fi
tools/build.sh windows-x86:hostile_suite >&2
export QORLIX_LANE=hostile WINEDEBUG=-all
exec tools/wine-run.sh build/windows-x86/bin/hostile_suite.exe --seconds "${seconds:-3}" \
  --processes "$processes" \
  ${markdown[@]+"${markdown[@]}"}

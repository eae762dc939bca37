#!/usr/bin/env bash
# Configures and builds, quietly; what went wrong is shown whole.
# usage: tools/build.sh PRESET[:TARGET,TARGET...] ...
set -euo pipefail
cd "$(dirname "$0")/.."
for job in "$@"; do
  preset=${job%%:*}
  targets=()
  [ "$job" = "$preset" ] || IFS=, read -ra targets <<<"${job#*:}"
  log=build/$preset.log
  mkdir -p build
  [ -e "build/$preset" ] || echo "building $job: takes minutes the first time; see $log"
  if ! { cmake --preset "$preset" &&
         cmake --build --preset "$preset" ${targets[@]+--target "${targets[@]}"}; } >"$log" 2>&1; then
    cat "$log" >&2
    echo "build: preset $preset failed" >&2
    exit 1
  fi
  echo "built $job"
done

#!/usr/bin/env bash
# Configures and builds the presets named, quietly; what went wrong is shown whole.
set -euo pipefail
cd "$(dirname "$0")/.."
for preset in "$@"; do
  log=build/$preset.log
  mkdir -p build
  if ! { cmake --preset "$preset" && cmake --build --preset "$preset"; } >"$log" 2>&1; then
    cat "$log" >&2
    echo "build: preset $preset failed" >&2
    exit 1
  fi
  echo "built $preset"
done

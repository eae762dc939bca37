#!/usr/bin/env bash
# Runs clang-tidy over the portable code, with the compile commands of the native build.
# What was found clean is remembered by its preprocessed text, so a warm run costs little.
set -eu
cd "$(dirname "$0")/.."
build=${1:-build/native-asan}
stamps=$build/tidy-stamps
mkdir -p "$stamps"

tidy_one() {
  local file=$1 stamp
  stamp=$stamps/$( (cat .clang-tidy; clang++ -std=c++20 -E -P -I. "$file"; echo "$file") |
                   sha256sum | cut -c1-32)
  [ -e "$stamp" ] && return 0
  clang-tidy --quiet -p "$build" "$file" 2>/dev/null && touch "$stamp"
}
export -f tidy_one
export stamps build

python3 - "$build" <<'PYTHON' | xargs -P "$(nproc)" -I{} bash -c 'tidy_one {}'
import json, os, sys
root = os.getcwd()
for entry in json.load(open(os.path.join(sys.argv[1], "compile_commands.json"))):
    path = os.path.relpath(entry["file"], root)
    if not path.startswith("..") and not path.endswith("Test.cpp") and "testing/" not in path \
            and not path.startswith("tests/"):
        print(path)
PYTHON

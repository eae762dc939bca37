#!/usr/bin/env bash
# Fails when clang-format would change a source file.
set -eu
cd "$(dirname "$0")/.."
find . -path ./build -prune -o \( -name '*.cpp' -o -name '*.h' -o -name '*.c' \) -print0 |
  xargs -0 clang-format --dry-run --Werror

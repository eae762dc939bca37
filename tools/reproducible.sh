#!/usr/bin/env bash
# Shows that the same sources give the same bytes: packs a copy of the tree twice, in two folders,
# at two times, under two time zones and file masks, without a compiler cache, and compares every
# delivered file. Takes minutes.
# usage: tools/reproducible.sh
set -euo pipefail
cd "$(dirname "$0")/.."
tools/setup.sh
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
moment=${SOURCE_DATE_EPOCH:-$(git log -1 --format=%ct)}
export CCACHE_DISABLE=1
unset CMAKE_C_COMPILER_LAUNCHER CMAKE_CXX_COMPILER_LAUNCHER SOURCE_DATE_EPOCH

# build FOLDER VARIABLE=VALUE...: the package of a copy of the tree in a folder.
build() {
  local folder=$1
  shift
  mkdir -p "$folder"
  git ls-files -z | tar -c --null -T - | tar -x -C "$folder"
  echo "packing in $folder"
  (cd "$folder"
   export "$@"
   umask "$MASK"
   # The tools that compile and link are not told of the moment: what they would take from the clock
   # has to show.
   cmake --preset windows-x86 -D BUILD_TESTING=OFF && cmake --build --preset windows-x86 &&
     SOURCE_DATE_EPOCH=$moment cmake --build --preset windows-x86 --target package) \
    >"$work/log" 2>&1 || { cat "$work/log" >&2; exit 1; }
}
# The delivered files, alone and packed, with their sums.
sums() {
  (cd "$1/build/windows-x86/package" && find . -type f -print0 | sort -z | xargs -0 sha256sum)
}

build "$work/one" MASK=022 TZ=UTC LC_ALL=C
sleep 2
build "$work/another/folder of another name" MASK=077 TZ=Asia/Tokyo LC_ALL=C.UTF-8
# The list from which the installer is made names the folder; it is not delivered.
sums "$work/one" | grep -v '/files.nsh$' >"$work/first"
sums "$work/another/folder of another name" | grep -v '/files.nsh$' >"$work/second"
if ! diff "$work/first" "$work/second"; then
  echo "reproducible: the files above differ" >&2
  exit 1
fi
grep -v ' ./stage/setup/' "$work/first" | grep -E '(\.exe|\.dll|\.cpl|\.a|\.zip)$'
echo "all $(wc -l <"$work/first") files are the same"

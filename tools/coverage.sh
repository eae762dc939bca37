#!/usr/bin/env bash
# Runs all tests on builds that count which of the server's own lines and branches are run, natively
# and under Wine, and puts both together. Takes some ten minutes.
#
# Fails below 95 % of lines or 90 % of branches, and for a line that nothing runs and that
# docs/coverage.md does not explain. The pages are in build/coverage.
# usage: tools/coverage.sh [--report]   --report: what the last run counted, without running again
set -euo pipefail
cd "$(dirname "$0")/.."

case ${1:-} in
  "" | --report) ;;
  *) echo "usage: tools/coverage.sh [--report]" >&2; exit 2 ;;
esac

out=build/coverage
folders='(platform|trace|codec|registry|board|actions|maintenance|timer|server)'
mkdir -p "$out"

tools/setup.sh
if [ "${1:-}" != --report ]; then
  tools/build.sh native-coverage windows-x86-coverage
  find build/native-coverage build/windows-x86-coverage -name '*.gcda' -delete

  . tools/wine-env.sh
  trap wine_stop_all EXIT
  wine_start
  tools/run_tests.py build/native-coverage || echo "coverage: some tests failed; going on" >&2
  # Counters are files that programs of one build share, so these take turns.
  GCOV_PREFIX=Z: tools/run_tests.py --jobs 1 build/windows-x86-coverage ||
    echo "coverage: some tests failed; going on" >&2
fi

# What the language adds for exceptions, and what a compiler finds unreachable, is nobody's branch.
count() {  # BUILD GCOV
  gcovr --root . --gcov-executable "$2" --filter "$folders/" --exclude '.*(Test|Fixture)\.(cpp|h)' \
    --exclude-throw-branches --exclude-unreachable-branches \
    --json "$out/$1.json" "build/$1"
}
count native-coverage gcov
count windows-x86-coverage i686-w64-mingw32-gcov-posix

merged=(--root . -a "$out/native-coverage.json" -a "$out/windows-x86-coverage.json")
gcovr "${merged[@]}" --html-details "$out/index.html" --json "$out/all.json" >/dev/null
gcovr "${merged[@]}" --txt "$out/lines.txt" >/dev/null
gcovr "${merged[@]}" --branches --txt "$out/branches.txt" >/dev/null
tools/check_coverage.py "$out/all.json" docs/coverage.md

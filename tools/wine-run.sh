#!/usr/bin/env bash
# Runs one Windows program in our own Wine prefix; CTest uses it as the emulator.
# The error stream goes to a file as well, whose name the program finds in QORLIX_STDERR_FILE:
# that is where Wine shows what a program reported to the event log.
set -u
. "$(dirname "$0")/wine-env.sh"
wine_prepare

QORLIX_STDERR_FILE=$(mktemp "${TMPDIR:-/tmp}/qorlix-stderr.XXXXXX")
export QORLIX_STDERR_FILE
wine "$@" 2>>"$QORLIX_STDERR_FILE"
code=$?
cat "$QORLIX_STDERR_FILE" >&2
rm -f "$QORLIX_STDERR_FILE"
exit $code

#!/usr/bin/env bash
# Sets up, builds the product and packs it: a ZIP and an installer, in build/windows-x86/package.
set -euo pipefail
cd "$(dirname "$0")/.."
tools/setup.sh
tools/build.sh windows-x86:package
cd build/windows-x86/package
sha256sum ./*.zip ./*.exe

#!/usr/bin/env bash
# Makes a bare Debian 12 machine able to build and test: installs what tools/packages.txt lists.
# A second run finds everything in place and does nothing.
#
# Wine's 32-bit half needs the i386 architecture. The i386 index of the security suite is not
# always to be had, and then the plain resolver trips over versions that it cannot pair; so the
# first attempt resolves against the two main suites alone, with lists of its own, and only the
# second one uses the machine's sources as they stand.
set -euo pipefail
cd "$(dirname "$0")/.."

mapfile -t packages < <(grep -v '^#' tools/packages.txt)

is_installed() {
  [ "$(dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
}

missing=()
for package in "${packages[@]}"; do
  is_installed "$package" || missing+=("$package")
done
if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

if [ "$(id -u)" -ne 0 ]; then
  cat >&2 <<MESSAGE
setup: these packages are missing: ${missing[*]}
setup: they can only be installed by root. Please run once:

    sudo $PWD/tools/setup.sh

MESSAGE
  exit 1
fi

if ! command -v apt-get >/dev/null || ! grep -q '^VERSION_CODENAME=bookworm' /etc/os-release; then
  echo "setup: only Debian 12 (bookworm) is set up automatically; install by hand: ${missing[*]}" >&2
  exit 1
fi

echo "setup: installing ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
dpkg --add-architecture i386

own=$(mktemp -d)
trap 'rm -rf "$own"' EXIT
mkdir -p "$own/lists/partial"
chmod -R a+rX "$own"

# One line each: the mirrors that the machine already takes the main suite from, whether they are
# written in the one-line or in the stanza form.
main_mirrors() {
  cat /etc/apt/sources.list /etc/apt/sources.list.d/*.list 2>/dev/null |
    awk '$1 == "deb" { sub(/\[[^]]*\] */, ""); if ($3 == "bookworm") print $2 }'
  cat /etc/apt/sources.list.d/*.sources 2>/dev/null |
    awk 'function flush() { if (suites ~ /(^| )bookworm( |$)/) print uri; uri = suites = "" }
         /^[[:space:]]*$/ || /^Types:/ { flush() }
         /^URIs:/ { uri = $2 }
         /^Suites:/ { $1 = ""; suites = $0 }
         END { flush() }'
}

for mirror in $(main_mirrors | sort -u); do
  echo "deb [signed-by=/usr/share/keyrings/debian-archive-keyring.gpg] $mirror bookworm main"
  echo "deb [signed-by=/usr/share/keyrings/debian-archive-keyring.gpg] $mirror bookworm-updates main"
done >"$own/sources.list"

two_suites=(-o "Dir::Etc::SourceList=$own/sources.list" -o Dir::Etc::SourceParts=/dev/null
            -o "Dir::State::Lists=$own/lists")
install=(install -y -q --no-install-recommends)

if [ -s "$own/sources.list" ] &&
   apt-get "${two_suites[@]}" update -q &&
   apt-get "${two_suites[@]}" "${install[@]}" "${missing[@]}"; then
  :
else
  echo "setup: the two main suites alone did not do; trying the machine's own sources" >&2
  apt-get update -q || true
  apt-get "${install[@]}" "${missing[@]}"
fi

for package in "${missing[@]}"; do
  is_installed "$package" || { echo "setup: $package did not install" >&2; exit 1; }
done
echo "setup: done"

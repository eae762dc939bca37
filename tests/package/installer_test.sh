#!/usr/bin/env bash
# Installs the package under Wine as an administrator's script would, works with what is installed,
# and takes it away again; in the end the machine is what it was.
# usage: tests/package/installer_test.sh BUILD_DIRECTORY COMPILER
set -u
build=$(cd "$1" && pwd)
compiler=$2
cd "$(dirname "$0")/../.." || exit 1
export QORLIX_WINEPREFIX=$PWD/build/wine-${QORLIX_LANE:-installer}
. tools/wine-env.sh
wine_start
work=$(mktemp -d)
trap 'wine_stop; rm -rf "$work"' EXIT

shopt -s nullglob
setups=("$build"/package/*-setup.exe)
[ ${#setups[@]} -eq 1 ] || { echo "there is no installer in $build/package"; exit 1; }
setup=${setups[0]}
stage=$build/package/stage/setup
sources='HKLM\SYSTEM\CurrentControlSet\Services\EventLog\Application'
uninstall='HKLM\Software\Microsoft\Windows\CurrentVersion\Uninstall\QorlixSRV'
kept='SOFTWARE\Vesmark\NORVA\KeptByTheInstallerTest'
failed=0

# check TEXT COMMAND...: the command succeeds, or !COMMAND... fails.
check() {
  local text=$1 wanted=0 got=0
  shift
  [ "$1" != ! ] || { wanted=1; shift; }
  "$@" >"$work/out" 2>&1 || got=1
  if [ "$got" -eq "$wanted" ]; then
    echo "passed  $text"
  else
    echo "FAILED  $text"
    sed 's/^/        /' "$work/out"
    failed=$((failed + 1))
  fi
}

# exits CODE COMMAND...
exits() {
  local wanted=$1 got=0
  shift
  "$@" </dev/null || got=$?
  [ "$got" -eq "$wanted" ] || { echo "exit code $got instead of $wanted"; return 1; }
}

# value KEY NAME TEXT: the registry has this.
value() { wine reg query "$1" /v "$2" </dev/null 2>/dev/null | tr -d '\r' | grep -F -- "  $3"; }
key() { wine reg query "$1" </dev/null; }
# The files at a folder are those of the package, those that are named, and no others. Stand-ins are
# among them if "standins" is named.
holds() {
  local folder=$1 without=(-not -path './standins/*')
  shift
  [ "${1:-}" != standins ] || { shift; without=(); }
  (cd "$stage" && find . -type f ${without[@]+"${without[@]}"} &&
    printf './%s\n' Uninstall.exe "$@") | sort >"$work/wanted"
  (cd "$folder" && find . -type f) | sort >"$work/found"
  diff "$work/wanted" "$work/found" || return 1
  local name
  while read -r name; do
    [ ! -e "$stage/$name" ] || cmp "$stage/$name" "$folder/$name" || return 1
  done <"$work/found"
}
# Files and keys of the whole machine; not the folder for temporary files, where a copy of the
# uninstaller waits to be deleted at the next start, and not what Wine notes of its screens.
trees=(Software 'System\CurrentControlSet\Services')
machine() {
  (cd "$WINEPREFIX/drive_c" && find . -not -path '*/[Tt]emp/*' | sort) >"$work/$1.0"
  local part=0 tree
  for tree in "${trees[@]}"; do
    part=$((part + 1))
    wine reg export "HKLM\\$tree" "Z:$work/export" /y >/dev/null 2>&1 </dev/null
    iconv -f UTF-16 -t UTF-8 "$work/export" >"$work/$1.$part"
  done
}
same_machine() {
  local part equal=0
  for part in 0 1 2; do
    [ -s "$work/$1.$part" ] && diff "$work/$1.$part" "$work/$2.$part" || equal=1
  done
  return $equal
}
# The uninstaller goes on in a copy of itself when it has returned.
gone() {
  for _ in $(seq 150); do
    [ -e "$1" ] || return 0
    sleep 0.1
  done
  echo "$1 is still there"
  return 1
}

# What an interrupted run of this test has left.
for folder in 'Program Files/QorlixSRV' Stack; do rm -rf "$WINEPREFIX/drive_c/$folder"; done
for name in "$sources\\MIREL RegistryOperation" "$sources\\Zqotrc" "$uninstall" "HKLM\\$kept"; do
  wine reg delete "$name" /f >/dev/null 2>&1 </dev/null
done

echo '== with nothing chosen'
machine before
home="$WINEPREFIX/drive_c/Program Files/QorlixSRV"
program='C:\Program Files\QorlixSRV\QorlixSRV.exe'
check 'it installs silently' exits 0 wine "$setup" /S
check 'the files of the package are there, no stand-ins, and no others' holds "$home"
check 'they have the time of the package' [ "$home/QorlixSRV.exe" -ot "$setup" ]
check 'the source of the registry operations is registered' \
  value "$sources\\MIREL RegistryOperation" EventMessageFile "$program"
check 'and takes all types' value "$sources\\MIREL RegistryOperation" TypesSupported 0x7
check 'the source of the trace is registered' \
  value "$sources\\Zqotrc" EventMessageFile "$program"
check 'and its category has a name' value "$sources\\Zqotrc" CategoryCount 0x1
# doctor_is_content: with what it finds of both sources.
doctor_is_content() {
  wine "$home/qorlixctl.exe" doctor </dev/null | tr -d '\r' | grep ' event log ' >"$work/doctor"
  cat "$work/doctor"
  [ "$(grep -c '^ok ' "$work/doctor")" -eq 2 ] && ! grep -v '^ok ' "$work/doctor"
}
check 'qorlixctl doctor finds both sources in order' doctor_is_content
check 'the system can list the program' value "$uninstall" DisplayName QorlixSRV
check 'and knows how to remove it silently' \
  value "$uninstall" QuietUninstallString '"C:\Program Files\QorlixSRV\Uninstall.exe" /S'
check 'it uninstalls silently' exits 0 wine "$home/Uninstall.exe" /S
check 'the folder goes' gone "$home"
machine after
check 'and nothing is left on the machine' same_machine before after

echo '== with the folder in quotation marks'
check 'it is refused as PowerShell passes it' exits 5 wine "$setup" /S '/D=C:\Stack\With blanks'
# Our own shell would have them escaped.
printf '"Z:%s" /S /D="C:\\Stack\\Quoted"\r\n@exit %%errorlevel%%\r\n' "$setup" >"$work/quoted.bat"
check 'and as somebody types it' exits 5 wine cmd /c "Z:$work/quoted.bat"
machine after
check 'and nothing is installed' same_machine before after

echo '== with the simulator and the stand-ins, in a folder of its own, where another program has a source'
wine reg add "$sources\\Zqotrc" /v EventMessageFile /d 'C:\other.dll' /f >/dev/null 2>&1 </dev/null
home=$WINEPREFIX/drive_c/Stack/Server
check 'it installs' exits 0 wine "$setup" /S /SIMULATOR /STANDINS '/D=C:\Stack\Server'
check 'the simulator lies beside the server, the stand-ins in their folder' \
  holds "$home" standins boardsvc32.dll
check 'the other source stays as it was' value "$sources\\Zqotrc" EventMessageFile 'C:\other.dll'
touch "$home/somebody's.txt"
ctl() { wine "$home/qorlixctl.exe" "$@"; }
check 'the server starts' exits 0 ctl start
check 'it answers' exits 0 ctl ping
# build_client: with what is installed.
build_client() {
  "$compiler" -std=c++20 -I"$home/include" tests/package/client.cpp -L"$home/lib" \
    -lqorlixclient_cpp -lssp -static -o "$work/client.exe"
}
check 'a client is built with what is installed' build_client
check 'and reaches it' exits 0 wine "$work/client.exe"
# build_c_client: the example, with the header and the library that are installed.
build_c_client() {
  "$compiler" -x c -std=c99 -I"$home/include" "$home/examples/c/hello.c" -x none -L"$home/lib" \
    -lqorlixclient -static -o "$work/hello.exe" && cp "$home/lib/qorlixclient.dll" "$work"
}
# greets CODE TEXT: what the program in C says and ends with.
greets() {
  exits "$1" wine "$work/hello.exe" >"$work/said" && tr -d '\r' <"$work/said" | grep -Fx -- "$2"
}
check 'a program in C is built with what is installed' build_c_client
check 'and the server answers it' greets 1 'refused: the key, value or file does not exist'
check 'it works on the registry' exits 0 ctl reg create "$kept"
check 'while it runs it cannot be installed over' exits 3 wine "$setup" /S '/D=C:\Stack\Server'
check 'nor elsewhere' exits 3 wine "$setup" /S '/D=C:\Stack\Other'
check 'nor be uninstalled' exits 3 wine "$home/Uninstall.exe" /S '_?=C:\Stack\Server'
check 'and all is still there' holds "$home" standins boardsvc32.dll "somebody's.txt"
check 'and answers' exits 0 ctl ping
check 'it stops' exits 0 ctl stop
check 'and the client says so' exits 1 wine "$work/client.exe"

echo '== over that, elsewhere'
old=$home
home=$WINEPREFIX/drive_c/Stack/Other
check 'it installs' exits 0 wine "$setup" /S /SIMULATOR '/D=C:\Stack\Other'
check 'with the simulator, as it was told' holds "$home" boardsvc32.dll
check "of the old folder somebody's file is left" \
  [ "$(cd "$old" && find . -type f)" = "./somebody's.txt" ]
check 'the server starts there' exits 0 ctl start
check 'and stops' exits 0 ctl stop
echo '== over that, with nothing chosen'
check 'it installs' exits 0 wine "$setup" /S
check 'at the same place, without the simulator, for nobody asked for it' holds "$home"
check 'it uninstalls' exits 0 wine "$home/Uninstall.exe" /S
check 'the folder goes' gone "$home"
check 'the other source is still there' value "$sources\\Zqotrc" EventMessageFile 'C:\other.dll'
check 'our own source is not' ! key "$sources\\MIREL RegistryOperation"
check "the stack's registry tree is still there" key "HKLM\\$kept"
for name in "$sources\\Zqotrc" "HKLM\\$kept"; do
  wine reg delete "$name" /f >/dev/null 2>&1 </dev/null
done

echo "== where the vendor's library is"
home=$WINEPREFIX/drive_c/Stack/Server
library=$WINEPREFIX/drive_c/windows/system32/boardsvc32.dll
echo "the vendor's" >"$library"
check 'the simulator is left out, and the exit code says so' \
  exits 4 wine "$setup" /S /SIMULATOR '/D=C:\Stack\Server'
check 'all else is there' holds "$home" "somebody's.txt"
rm "$library"
check 'without it the simulator is put there' \
  exits 0 wine "$setup" /S /SIMULATOR '/D=C:\Stack\Server'
echo "the vendor's" >"$home/boardsvc32.dll"
check "where the vendor's has taken its place it uninstalls" \
  exits 0 wine "$home/Uninstall.exe" /S
check 'the program goes' gone "$home/Uninstall.exe"
check "and leaves the vendor's library" [ -s "$home/boardsvc32.dll" ]
rm -rf "$WINEPREFIX/drive_c/Stack"

echo "$failed checks failed"
[ "$failed" -eq 0 ]

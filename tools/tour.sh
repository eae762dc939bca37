#!/usr/bin/env bash
# A visible piece of work: starts the server as a starter does and drives it with qorlixctl over the
# real pipe. Each step prints what was asked, what came back, and whether that is right.
set -u
. "$(dirname "$0")/wine-env.sh"
cd "$QORLIX_ROOT/build/windows-x86/bin"

if wine qorlixctl.exe ping --timeout 1 >/dev/null 2>&1; then
  echo "A server is running already (of ./run --serve?); 'tools/ctl stop' ends it." >&2
  exit 2
fi

demo='SOFTWARE\Vesmark\NORVA\Tour'
board='SOFTWARE\Vesmark\NORVA\DefDevices\DeviceID\HWX7101'
names='SOFTWARE\Vesmark\NORVA\LogNames'
devices='SOFTWARE\Vesmark\NORVA\LogDevices'
plugin='SOFTWARE\Vesmark\NORVA\DefDevices\DeviceID\DEMO1'
gate='SOFTWARE\Vesmark\Shared Tools\MIREL'
trace='SOFTWARE\Vesmark\NORVA\TrcParams'
work=$(mktemp -d)
steps=0
wrong=0

ctl() { wine qorlixctl.exe "$@"; }

# verdict TEXT CONDITION...: prints whether the condition holds.
verdict() {
  local text=$1
  shift
  steps=$((steps + 1))
  if "$@"; then
    printf '    right: %s\n' "$text"
  else
    printf '    WRONG: %s\n' "$text"
    wrong=$((wrong + 1))
  fi
}

# The arguments as one would type them.
shown() {
  local word
  for word; do
    case $word in *[\ \\]*) printf " '%s'" "$word" ;; *) printf ' %s' "$word" ;; esac
  done
  printf '\n'
}

# step TITLE CODE TEXT ARGUMENTS...: asks qorlixctl, and expects the exit code and the text.
step() {
  local title=$1 code=$2 text=$3
  shift 3
  printf '\n%s\n    $ qorlixctl' "$title"
  shown "$@"
  ctl "$@" >"$work/out" 2>"$work/err"
  local got=$?
  tr -d '\r' <"$work/out" | sed 's/^/    /'
  tr -d '\r' <"$work/err" | grep -v ':eventlog:' | sed 's/^/    /'
  verdict "exit code $code, and the answer says \"$text\"" answered "$got" "$code" "$text"
}
answered() { [ "$1" -eq "$2" ] && cat "$work/out" "$work/err" | tr -d '\r' | grep -qF -- "$3"; }

# events TEXT: the server has reported exactly one more event with this text.
events=0
one_event() {
  events=$((events + 1))
  [ "$(grep -c ':eventlog:' "$log")" -eq "$events" ] &&
    grep ':eventlog:' "$log" | tail -n 1 | grep -qF -- "$1"
}

# What the tour put into the registry must not open the gate for whatever uses the prefix next.
finish() {
  ctl stop >/dev/null 2>&1
  local key
  for key in "$gate" "$board" "$plugin" "$names\\PLC1" "$names\\DEMO1" "$devices\\NB410A.1" \
    "$devices\\NB510.2" "$devices\\DEMO1"; do
    wine reg delete "HKLM\\$key" /f >/dev/null 2>&1 </dev/null
  done
  take_trace_back
  "$QORLIX_ROOT/tools/place-standins.sh" --remove
  rm -rf "$work" "$WINEPREFIX/drive_c/QorlixTour"
}

# The trace configuration of the machine is put aside while the tour has its own.
kept=$WINEPREFIX/drive_c/QorlixTourTrace.reg
aside=0
put_trace_aside() {
  aside=1
  # What an earlier tour that was ended by force put aside is still the machine's own.
  [ -e "$kept" ] ||
    wine reg export "HKLM\\$trace" 'C:\QorlixTourTrace.reg' /y >/dev/null 2>&1 </dev/null
  wine reg delete "HKLM\\$trace" /f >/dev/null 2>&1 </dev/null
}
take_trace_back() {
  [ "$aside" -eq 1 ] || return 0
  aside=0
  wine reg delete "HKLM\\$trace" /f >/dev/null 2>&1 </dev/null
  [ -e "$kept" ] || return 0
  wine reg import 'C:\QorlixTourTrace.reg' >/dev/null 2>&1 </dev/null && rm -f "$kept"
}
trap finish EXIT

# What a set-up leaves behind: two boards, one of them with half its hardware identifier, and a
# logical name whose device is gone. The board stand-in logs its calls beside its inventory.
value() { wine reg add "HKLM\\$1" /v "$2" /d "$3" /f >/dev/null 2>&1 </dev/null; }
cp "$QORLIX_ROOT/standins/boardsvc32/samples/two-boards.ini" "$QORLIX_ROOT/build/boards.ini"
export QORLIX_BOARD_INVENTORY="Z:$QORLIX_ROOT/build/boards.ini"
value "$board" HardwareID 'PCI\VEN_1F3C&DEV_5101'
value "$names\\PLC1" LogDevice 'Pulled board'
value "$gate" SetupSucceeded 1
# And what the commands that install and restart find in the system directory: a plug-in, which the
# device's key names, and the libraries.
"$QORLIX_ROOT/tools/place-standins.sh"
value "$plugin" HardwareID 'PCI\VEN_1F3C&DEV_5101'
value "$plugin" Installer 'sampledev.dll,SampleInstall'
value "$plugin" Deinstaller 'sampledev.dll,SampleDeinstall'

# Nobody creates the folder that trace files go to. Files of an earlier tour would be shown as well.
put_trace_aside
rm -rf "$WINEPREFIX/drive_c/QorlixTour"
mkdir -p "$WINEPREFIX/drive_c/QorlixTour"

printf 'Start the server and wait until it says that its pipe exists\n'
printf '    $ qorlixctl start --stay\n'
# What the server reports to the event log shows up on its error stream.
log=$QORLIX_ROOT/build/server.log
ctl start --stay >"$work/start" 2>"$log" &
starter=$!
for _ in $(seq 200); do
  grep -q 'ready' "$work/start" && break
  kill -0 "$starter" 2>/dev/null || break
  sleep 0.05
done
tr -d '\r' <"$work/start" | sed 's/^/    /'
kill -0 "$starter" 2>/dev/null || sed 's/^/    /' "$log"
verdict 'the server is ready' grep -q 'the server is ready' "$work/start"

step 'Does it answer?' 0 'the server answered 0' ping
step 'At its start it completed a hardware identifier' 0 '&SUBSYS_51011F3C"' \
  reg get "$board" HardwareID
step 'And the check took a device that is gone off a logical name' 0 'data:   ""' \
  reg get "$names\\PLC1" LogDevice

step 'Which boards are installed?' 0 'NB410A' board installed
step 'Which of them have this device id?' 0 'Local Area Connection 2' board list HWX7101
step 'Which could be installed?' 0 'NB510' board available
step 'How is a board configured?' 0 'RFC 1006' board configs NB410A
step 'What is known of it?' 0 'Firmware 5.2' board info 1 NB410A
step 'Look for boards that came or went' 0 'the hardware was scanned' board scan
step 'Assign a device that does not exist ...' 0 '0 (success)' \
  reg set "$names\\PLC1" LogDevice 'Pulled board'
step '... and have the configuration checked' 0 'unassigned: "PLC1"' check

step 'Assign it once more ...' 0 '0 (success)' \
  reg set "$names\\PLC1" LogDevice 'Pulled board'
step '... and have a device installed by its plug-in' 0 'the installer of "DEMO1" has run' \
  install DEMO1 --language EN
step 'The plug-in made a logical device' 0 'data:   "EN"' reg get "$devices\\DEMO1" Language
step 'And the check that follows unassigned the pulled board' 0 'data:   ""' \
  reg get "$names\\PLC1" LogDevice
step 'Have the device deinstalled' 0 'the deinstaller of "DEMO1" has run' \
  deinstall DEMO1 --board NB410A
step 'Its logical device is gone' 1 'ERROR_FILE_NOT_FOUND' reg get "$devices\\DEMO1" Language
step 'Have a driver installed' 0 '0 (success), twice' \
  driver install qorlixnet 'C:\Drivers\qorlixnet.inf' --mode 1
step 'Restart a device in the background, and fetch the result' 0 'has ended: 0 (success)' \
  restart CP_L2_1: --event 'Global\Tour' --wait 20
step 'A result is there once only' 1 'no result under this name' restart --fetch 'Global\Tour'
step 'Add an address to a network interface' 0 'nteContext:' ip add 192.168.0.10 255.255.255.0 11
context=$(sed -n 's/^nteContext:  *\([0-9]*\).*/\1/p' "$work/out" | tr -d '\r')
step 'Delete it by its context' 0 'the address is deleted' ip delete "$context"
step 'It is not there any more' 1 'ERROR_NOT_FOUND' ip delete "$context"

step 'Have the server tell what it does ...' 0 'Level' trace set Level all
step '... all of it ...' 0 'zqserver_level' trace set zqserver_level all
step '... into files ...' 0 'Output' trace set Output FILE
step '... of this folder ...' 0 'Path' trace set Path 'C:\QorlixTour'
step '... and this name' 0 'FileName' trace set FileName tour
step 'Let it read that now' 0 'configuration' trace refresh
step 'One request ...' 0 'Firmware 5.2' board info 1 NB410A
step '... is told step by step' 0 '<< BRDX_GetBoardInfoBL result = 0x0' \
  trace dump --function 'BC_GetBoardInfo*'
step 'A page to look at' 0 'trace.html' \
  trace report -o "Z:$QORLIX_ROOT/build/trace.html" --force
step 'And off again ...' 0 'Level' trace set Level 0
step '... at once' 0 'configuration' trace refresh
take_trace_back

step 'Create a key in the permitted tree' 0 '0 (success)' reg create "$demo"
step 'Write a value' 0 '0 (success)' reg set "$demo" Greeting 'Hello there'
step 'Read it back' 0 'Hello there' reg get "$demo" Greeting
step 'Enumerate values' 0 'Greeting' reg values "$demo"
step 'Enumerate keys' 0 'Tour' reg ls 'SOFTWARE\Vesmark\NORVA'
step 'Remove the value' 0 '0 (success)' reg unset "$demo" Greeting
step 'Read what is no longer there' 1 'ERROR_FILE_NOT_FOUND' reg get "$demo" Greeting

step 'Delete takes the tree PATH\PATH: make one ...' 0 '0 (success)' reg create "$demo\\$demo"
step '... and delete it' 0 '0 (success)' reg delete "$demo"

step 'A change outside the permitted tree is refused' 1 'ERROR_ACCESS_DENIED' \
  reg set 'SOFTWARE\Elsewhere' Greeting 'Hello there'
grep ':eventlog:' "$log" | tail -n 1 | sed 's/^/    event log: /'
verdict 'one event names the path' \
  one_event 'Invalid Access to Reg-Key: SOFTWARE\\Elsewhere'
step 'So is a way around it' 1 'ERROR_ACCESS_DENIED' \
  reg create 'SOFTWARE\Vesmark\NORVA\..\..\Elsewhere'
verdict 'one event names the path as it was asked for' \
  one_event 'Invalid Access to Reg-Key: SOFTWARE\\Vesmark\\NORVA\\..\\..\\Elsewhere'
step 'And every root key but HKEY_LOCAL_MACHINE' 1 'ERROR_ACCESS_DENIED' \
  reg create "$demo" --base HKCU
verdict 'one event says so' one_event 'Only operations to HKEY_LOCAL_MACHINE are allowed!'

step 'A command that does not exist' 1 'SRV_ERR_UNKNOWN_COMMAND' raw FFFF

printf '\nA second server does not start\n    $ QorlixSRV.exe\n'
wine QorlixSRV.exe 2>/dev/null
second=$?
printf '    exit code %s\n' "$second"
verdict 'it exits with 183' [ "$second" -eq 183 ]
step 'The first one is undisturbed' 0 'the server answered 0' ping

if [ "${1:-}" = --serve ]; then
  trap 'rm -rf "$work"' EXIT
  printf '\n%s steps, %s wrong. The server keeps running; use tools/ctl, and tools/ctl stop.\n' \
    "$steps" "$wrong"
  printf 'Its event-log reports go to build/server.log; its stand-ins stay in the prefix until\n'
  printf 'tools/place-standins.sh --remove takes them away.\n'
  [ "$wrong" -eq 0 ]
  exit
fi

step 'Stop it, with the confirmation' 0 'the server has stopped' stop
wait "$starter"
tr -d '\r' <"$work/start" | tail -n 1 | sed 's/^/    starter: /'
verdict 'the process ended with exit code 1' grep -q 'ended with exit code 1' "$work/start"

printf '\n%s steps, %s wrong\n' "$steps" "$wrong"
[ "$wrong" -eq 0 ]

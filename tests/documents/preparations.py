"""What the commands of a page take for granted when they begin, and what they leave behind."""
import re
import shutil
import time
import zipfile

import pages

NORVA = "SOFTWARE\\Vesmark\\NORVA"
GATE = "SOFTWARE\\Vesmark\\Shared Tools\\MIREL"
DEVICES = NORVA + "\\DefDevices\\DeviceID"
CTL = "tools/ctl "


def expect(ran, code: int = 0) -> None:
    for one in ran if isinstance(ran, list) else [ran]:
        assert one.code == code, f"a preparation fails: {one}"


def first_block(page: str, kind: str) -> str:
    blocks = pages.Page(pages.ROOT / page).blocks
    return "\n".join(next(one for one in blocks if one.kind == kind).lines) + "\n"


# --- Before the first block of a section ---

def client_package(machine) -> None:
    unpack(machine)
    (machine.root / "unpacked/hello.c").write_text(first_block("docs/client.md", "c"))
    shutil.copy(pages.ROOT / "tests/package/client.cpp", machine.root / "unpacked")


def client_hello(machine) -> None:
    (machine.root / "hello.c").write_text(first_block("docs/client.md", "c"))


def operations_repair(machine) -> None:
    """A set-up that has half a hardware identifier, and has ended."""
    machine.value(DEVICES + "\\HWX7101", "HardwareID", "PCI\\VEN_1F3C&DEV_5101")
    machine.value(GATE, "SetupSucceeded", "1")
    machine.start_server("plant.ini")


def operations_boards(machine) -> None:
    machine.no_key(GATE)
    machine.no_key(NORVA + "\\LogDevices")
    machine.start_server("plant.ini")


def operations_check(machine) -> None:
    machine.value(NORVA + "\\LogNames\\PLC1", "LogDevice", "NB999")


def demo_device(machine) -> None:
    expect(machine.shell(["tools/place-standins.sh"]))
    machine.value(DEVICES + "\\DEMO1", "Deinstaller", "sampledev.dll,SampleDeinstall")
    machine.value(DEVICES + "\\DEMO1", "HardwareID", "PCI\\VEN_1F3C&DEV_5101")
    machine.value(DEVICES + "\\DEMO1", "Installer", "sampledev.dll,SampleInstall")


def operations_doctor(machine) -> None:
    machine.no_key(GATE)  # with the strict profile that the page has switched on
    machine.value(DEVICES + "\\DEMO1", "Installer", "..\\sampledev.dll,SampleInstall")


def unpack(machine) -> None:
    """The ZIP as somebody who has got it."""
    machine.stop_server()
    packed, = (machine.root / "build/windows-x86/package").glob("*.zip")
    shutil.rmtree(machine.root / "unpacked", ignore_errors=True)
    with zipfile.ZipFile(packed) as archive:
        archive.extractall(machine.root)
    (machine.root / packed.stem).rename(machine.root / "unpacked")


def operations_package(machine) -> None:
    unpack(machine)
    shutil.copy(pages.ROOT / "tests/package/client.cpp", machine.root / "unpacked")
    setup, = (machine.root / "build/windows-x86/package").glob("*-setup.exe")
    shutil.copy(setup, machine.work)


def packaged_start(machine) -> None:
    """The vendor's library is where the page asks for it."""
    unpack(machine)
    shutil.copy(machine.root / "unpacked/standins/boardsvc32/boardsvc32.dll",
                machine.root / "unpacked")


def packaged_simulator(machine) -> None:
    (machine.root / "unpacked/boardsvc32.dll").unlink()


def trace_begins(machine) -> None:
    shutil.rmtree(machine.prefix / "drive_c/Tracing", ignore_errors=True)
    machine.start_server()


def trace_something(machine) -> None:
    expect(machine.shell([CTL + "ping"]))


def trace_lines(machine) -> None:
    """What the page's samples show: a key, a value, and a value that is refused."""
    traces = machine.prefix / "drive_c/Tracing"
    expect(machine.shell([CTL + "trace set Level all", CTL + "trace refresh", CTL + "ping"]))
    for file in traces.glob("*.TRC"):
        file.unlink()
    expect(machine.shell([CTL + f"reg create '{NORVA}\\Mine'",
                          CTL + f"reg set '{NORVA}\\Mine' Greeting Hello"]))
    expect(machine.shell([CTL + "reg set 'SOFTWARE\\Elsewhere' Greeting Hello"]), 1)


def trace_report(machine) -> None:
    folder = machine.prefix / "drive_c/TMP"
    folder.mkdir(exist_ok=True)
    for number in "12":
        shutil.copy(machine.prefix / "drive_c/Tracing/srv1.TRC", folder / f"ZqFILE{number}.TRC")


def simulator_inventory(machine) -> None:
    machine.stop_server()
    folder = machine.prefix / "drive_c/inventories"
    folder.mkdir(exist_ok=True)
    shutil.copy(machine.root / "standins/boardsvc32/samples/two-boards.ini", folder)


def simulator_works(machine) -> None:
    """The server of the block before has the inventory that was named."""
    ran = machine.shell([CTL + "board installed", CTL + "stop"])
    expect(ran)
    assert any("NB410A" in line for line in ran[0].output), ran[0]


def standins_script(machine) -> None:
    machine.stop_server()
    found = re.search(r"\[answer RunEpromPanelAsAdmin\].*?\n\n", "\n".join(
        line for block in pages.Page(pages.ROOT / "standins/README.md").blocks
        for line in [*block.lines, ""]), re.DOTALL).group(0)
    (machine.root / "build/script.ini").write_text(found.replace("delay = 5000\n", ""))


BEFORE = {
    ("docs/client.md", "building-and-linking", 0): client_package,
    ("docs/client.md", "in-the-sources", 0): client_hello,
    ("docs/operations.md", "start-up-maintenance", 0): operations_repair,
    ("docs/operations.md", "boards", 0): operations_boards,
    ("docs/operations.md", "the-check", 0): operations_check,
    ("docs/operations.md", "plug-ins", 0): demo_device,
    ("docs/operations.md", "doctor", 0): operations_doctor,
    ("docs/operations.md", "installing", 0): operations_package,
    ("installer/README.md", "start-it", 0): packaged_start,
    ("installer/README.md", "start-it", 1): packaged_simulator,
    ("docs/trace.md", "switch-it-on", 0): trace_begins,
    ("docs/trace.md", "switch-it-on", 1): trace_something,
    ("docs/trace.md", "read-it", 0): trace_lines,
    ("docs/trace.md", "a-report-to-look-at", 0): trace_report,
    ("standins/README.md", "the-script", 0): standins_script,
    ("standins/boardsvc32/README.md", "getting-started", 0): simulator_inventory,
    ("standins/boardsvc32/README.md", "getting-started", 1): simulator_works,
}

# Where commands are run that are not for the root of the sources, or a prompt's own folder.
FOLDERS = {("docs/client.md", "building-and-linking", "$"): ["unpacked"],
           ("docs/client.md", "in-c", "$"): ["unpacked"],
           ("docs/operations.md", "installing", "$"): ["unpacked"],
           ("installer/README.md", "start-it", ">"): ["unpacked"]}

# Commands that do not end with 0.
EXITS = {"qorlixctl board uninitialized": 1, "qorlixctl doctor": 1}

# What differs from run to run: everywhere, and for one command. Blanks count as one.
VARIES = {
    "": [(r"process \d+", "process #"), (r"[A-Z]:\\[^,;]*\\(?=QorlixSRV\.exe)", ""),
         (r"[\d.]+ ms\b", "# ms")],
    "qorlixctl doctor": [(r"\d+ (ok|note|warning|error)s?", r"# \1")],
    "qorlixctl trace dump --function Reg_Set*": [
        (r"^[\d:,]{12} P\d+ +T\d+", "TIME P# T#"), (r"(?<=RegistryComm:)\d+", "#")],
    # How often the loop waits depends on how fast a client is.
    "qorlixctl trace stats": [(r"(?<=\s)(\d+\.\d+|-)(?=\s|$)", "#"),
                              (r"^(RunSrvLoop +)\d+|^\d+(?= lines)", r"\1#")],
}


# --- Behind a page; each returns what is wrong ---

def hello_says_what_it_reads(machine) -> str:
    shutil.copy(machine.root / "build/windows-x86/bin/qorlixclient.dll", machine.root)
    machine.value(NORVA + "\\Demo", "Mode", "fast")
    machine.start_server()
    ran = machine.shell([". tools/wine-env.sh; wine hello.exe"])[0]
    return "" if ran.output == ["Mode is fast"] else str(ran)


def the_simulator_has_logged(machine) -> str:
    log = machine.prefix / "drive_c/inventories/calls.log"
    mine = machine.root / "build/calls.log"
    missing = [str(path) for path in (log, mine) if not path.exists()]
    return ", ".join(missing)


def the_panel_was_scripted(machine) -> str:
    log = (machine.root / "build/standins.log").read_text()
    return "" if re.search(r"RunEpromPanelAsAdmin .*-> 0 .*answer=", log) else log


def a_report_was_made(machine) -> str:
    report = machine.work / "report.html"
    return "" if report.exists() and "Reg_SetValue" in report.read_text() else "no report"


def nothing_is_installed(machine) -> str:
    """The uninstaller goes on behind the command."""
    left = ["?"]
    deadline = time.monotonic() + 20
    while left and time.monotonic() < deadline:
        left = [path.name for path in (machine.prefix / "drive_c/Stack/Server").glob("*")
                if path.name != "Uninstall.exe"]
        time.sleep(0.1)
    return ", ".join(left)


def wine_goes_on(machine) -> str:
    """The page has stopped it, and for one program after the other it starts slowly."""
    machine.start_wine()
    return ""


AFTER = {
    "docs/client.md": [hello_says_what_it_reads],
    "docs/operations.md": [nothing_is_installed],
    "docs/testing.md": [wine_goes_on],
    "docs/trace.md": [a_report_was_made],
    "standins/README.md": [the_panel_was_scripted],
    "standins/boardsvc32/README.md": [the_simulator_has_logged],
}

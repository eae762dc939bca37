"""The machine on which the documents' commands run: a copy of the sources, so that nothing that a
command leaves behind stays, beside the build that is there, and a Wine prefix of its own."""
import os
import pathlib
import re
import shutil
import subprocess
import tempfile

from pages import ROOT

MARK = "@@ends "
ROOT_KEY = "HKLM\\"


class Ran:
    def __init__(self, code: int, output: list):
        self.code, self.output = code, output

    def __str__(self):
        return "\n".join([f"exit code {self.code}", *self.output])


class Machine:
    def __init__(self, build: pathlib.Path):
        self.scratch = pathlib.Path(tempfile.mkdtemp(prefix="qorlix-documents."))
        self.root = self.scratch / "sources"
        shutil.copytree(ROOT, self.root, symlinks=True, ignore=self._not_sources)
        (self.root / "build").mkdir()
        for built in build.parent.iterdir():
            if built.is_dir() and (built / "build.ninja").exists():
                (self.root / "build" / built.name).symlink_to(built)
        self.prefix = build.parent / "wine-documents"
        self.env = dict(os.environ, QORLIX_WINEPREFIX=str(self.prefix), LC_ALL="C.UTF-8",
                        WINEPATH=self.windows_path(self.root / "build/windows-x86/bin"))
        for name in ("QORLIX_LANE", "QORLIX_DISPLAY", "GTEST_OUTPUT", "DISPLAY"):
            self.env.pop(name, None)
        self.work = self.prefix / "drive_c" / "QorlixDocuments"  # where a prompt stands

        self.start_wine()
        self.clean()
        self.work.mkdir()

    def close(self) -> None:
        self.clean()
        self.shell([". tools/wine-env.sh; wine_stop"])
        shutil.rmtree(self.scratch)

    def clean(self) -> None:
        """Takes away what commands leave, those of a run that was ended by force as well."""
        self.stop_server()
        self.wine("reg", "delete", ROOT_KEY + "SOFTWARE\\Vesmark", "/f")
        self.shell(["tools/place-standins.sh --remove"])
        for name in (self.work.name, "Tracing", "TMP", "inventories", "Stack", "QorlixTour"):
            shutil.rmtree(self.prefix / "drive_c" / name, ignore_errors=True)

    @staticmethod
    def _not_sources(folder: str, names: list) -> list:
        if pathlib.Path(folder).parent == ROOT / "fuzz" / "corpus":
            return names  # thousands, and no command that is run reads them
        if folder != str(ROOT):
            return ["__pycache__"]
        # Programs of tests may make and delete files here meanwhile.
        return [name for name in names if name in ("build", ".git")
                or name.endswith((".ini", ".log"))]

    @staticmethod
    def windows_path(path: pathlib.Path) -> str:
        return "Z:" + str(path).replace("/", "\\")

    def start_wine(self) -> None:
        self.shell([". tools/wine-env.sh; wine_start"])

    def shell(self, commands: list, folder: str = ".") -> list:
        """Runs the commands in one shell; returns what became of each."""
        lines = [f"cd {self.root}/{folder} || exit 1"]
        for command in commands:
            lines += [command, f'printf "\\n{MARK}%s\\n" "$?"']
        script = self.scratch / "commands.sh"
        script.write_text("\n".join(lines) + "\n")
        return self._run(["bash", str(script)], len(commands), self.root)

    def prompt(self, commands: list, folder: str = "") -> list:
        """The same at a Windows prompt. A batch file waits for a program without a console, which a
        prompt does not."""
        place = self.root / folder if folder else self.work
        lines = ["@echo off"]
        for command in commands:
            waits = "start " if command == "QorlixSRV.exe" else ""
            lines += [waits + command, "echo.", f"echo {MARK}%errorlevel%"]
        (place / "commands.bat").write_text("\r\n".join(lines) + "\r\n")
        return self._run(["bash", "-c", f'. "{self.root}/tools/wine-env.sh"; '
                          'exec wine cmd /c commands.bat'], len(commands), place)

    def _run(self, command: list, wanted: int, folder: pathlib.Path) -> list:
        # Into a file: a server that is started keeps a pipe open for as long as it lives.
        output = self.scratch / "output"
        with open(output, "wb") as stream:
            # Python's own limit would look only every 50 ms whether the command has ended.
            done = subprocess.run(["timeout", "--foreground", "90", *command], cwd=folder,
                                  env=self.env, stdin=subprocess.DEVNULL, stdout=stream,
                                  stderr=subprocess.STDOUT)
            if done.returncode == 124:
                stream.write(b"\nnothing more came within 90 s\n")
        ran, lines = [], []
        for line in output.read_text(encoding="utf-8", errors="replace").splitlines():
            if line.startswith(MARK):
                ran.append(Ran(int(line[len(MARK):]), self._without_noise(lines)))
                lines = []
            else:
                lines.append(line.rstrip("\r"))
        if len(ran) < wanted:
            ran.append(Ran(-1, lines))
        return ran + [Ran(-1, ["not reached"])] * (wanted - len(ran))

    @staticmethod
    def _without_noise(lines: list) -> list:
        """Without the event log, which Wine prints, and without the empty line before a mark."""
        lines = [line for line in lines if not re.search(r":(eventlog|wineboot):|^wine: ", line)]
        return lines[:-1] if lines and not lines[-1].strip() else lines

    # What a page takes for granted.

    def wine(self, *words: str) -> Ran:
        quoted = " ".join("'" + word.replace("'", "'\\''") + "'" for word in words)
        return self.shell([f". tools/wine-env.sh; wine {quoted}"])[0]

    def value(self, key: str, name: str, text: str) -> None:
        self.wine("reg", "add", ROOT_KEY + key, "/v", name, "/d", text, "/f")

    def no_key(self, key: str) -> None:
        self.wine("reg", "delete", ROOT_KEY + key, "/f")

    def start_server(self, inventory: str = "") -> None:
        self.stop_server()
        named = ""
        if inventory:
            sample = self.root / "standins/boardsvc32/samples" / inventory
            shutil.copy(sample, self.root / "build")
            named = f"QORLIX_BOARD_INVENTORY={self.windows_path(self.root / 'build' / inventory)!r} "
        ran = self.shell([named + "tools/ctl start"])[0]
        assert ran.code == 0, f"the server does not start: {ran}"

    def stop_server(self) -> None:
        self.shell(["tools/ctl stop --timeout 20"])

#!/usr/bin/env python3
"""Makes the ZIP and the installer of a build that is up to date; the target `package` calls it.

Both hold the same files, those that cmake/Package.cmake names, with a bill of materials and the
licence texts of what is linked in. Every time in them is SOURCE_DATE_EPOCH, by default that of the
last commit, so that the same sources give the same bytes.
"""
import argparse
import os
import pathlib
import shutil
import subprocess
import sys
import time
import zipfile

import make_sbom

ROOT = pathlib.Path(__file__).resolve().parent.parent
EPOCH_OF_ZIP = 315532800  # 1980-01-01, before which a ZIP knows no time
# Which choice of the installer a folder of the package belongs to; all else is the first.
CHOICES = {"include": "DEVELOPMENT", "lib": "DEVELOPMENT", "examples": "DEVELOPMENT",
           "standins": "STANDINS"}
LICENCES = {"gcc-runtime": "gcc-mingw-w64-base", "mingw-w64": "mingw-w64-common", "nsis": "nsis"}


def epoch() -> int:
    given = os.environ.get("SOURCE_DATE_EPOCH")
    if not given:
        git = subprocess.run(["git", "-C", ROOT, "log", "-1", "--format=%ct"], capture_output=True,
                             text=True)
        given = git.stdout.strip() or "0"
    return max(int(given), EPOCH_OF_ZIP)


def stage_files(build: pathlib.Path, stage: pathlib.Path, with_installer: bool) -> None:
    subprocess.run(["cmake", "--install", build, "--prefix", stage, "--component", "package"],
                   check=True, stdout=subprocess.DEVNULL)
    (stage / "licenses").mkdir()
    for name, package in LICENCES.items():
        text = pathlib.Path("/usr/share/doc", package, "copyright")
        if name == "nsis" and not with_installer:
            continue
        if not text.exists():
            sys.exit(f"package: the licence text {text} is missing")
        shutil.copyfile(text, stage / "licenses" / f"{name}.txt")


def files_of(stage: pathlib.Path) -> list:
    return sorted(path.relative_to(stage).as_posix() for path in stage.rglob("*") if path.is_file())


def make_zip(stage: pathlib.Path, output: pathlib.Path, moment: int) -> None:
    stamp = time.gmtime(moment)[:6]
    with zipfile.ZipFile(output, "w", zipfile.ZIP_DEFLATED, compresslevel=9) as archive:
        for name in files_of(stage):
            entry = zipfile.ZipInfo(f"{output.stem}/{name}", stamp)
            entry.compress_type = zipfile.ZIP_DEFLATED
            entry.create_system = 3
            runs = name.endswith((".exe", ".dll", ".cpl"))
            entry.external_attr = (0o100755 if runs else 0o100644) << 16
            archive.writestr(entry, (stage / name).read_bytes())


def macro(name: str, lines: list) -> str:
    return "\n".join([f"!macro {name}", *(f"  {line}" for line in lines), "!macroend", ""])


def file_macros(stage: pathlib.Path) -> str:
    """INSTALL_<choice> for each choice of the installer, and REMOVE_FILES, which takes every file
    and every folder that is empty then, and nothing that the installer did not bring."""
    names = files_of(stage)
    text = ""
    for choice in ["PROGRAMS", *sorted(set(CHOICES.values()))]:
        lines, folder = [], None
        for name in names:
            path = pathlib.PureWindowsPath(name)
            if CHOICES.get(path.parts[0], "PROGRAMS") != choice:
                continue
            if path.parent != folder:
                folder = path.parent
                lines.append(f'SetOutPath "$INSTDIR\\{folder}"' if folder.name
                             else 'SetOutPath "$INSTDIR"')
            lines.append(f'File "{stage / name}"')
        text += macro(f"INSTALL_{choice}", lines)
    folders = {parent for name in names for parent in pathlib.PureWindowsPath(name).parents
               if parent.name}
    deepest_first = sorted(folders, key=lambda folder: (-len(folder.parts), str(folder)))
    return text + macro("REMOVE_FILES", [
        *(f'Delete "$INSTDIR\\{pathlib.PureWindowsPath(name)}"' for name in names),
        *(f'RMDir "$INSTDIR\\{folder}"' for folder in deepest_first)])


def make_installer(makensis: str, stage: pathlib.Path, work: pathlib.Path, version: str,
                   output: pathlib.Path, moment: int) -> None:
    (work / "files.nsh").write_text(file_macros(stage))
    size = sum((stage / name).stat().st_size for name in files_of(stage))
    subprocess.run([makensis, "-V2", "-WX", "-INPUTCHARSET", "UTF8", "-NOCD",
                    f"-DVERSION={version}", f"-DFILES={work / 'files.nsh'}",
                    f"-DSIMULATOR={stage}/standins/boardsvc32",
                    f"-DSIZE_KB={size // 1024}", f"-DOUTPUT={output}",
                    ROOT / "installer" / "QorlixSRV.nsi"], check=True,
                   env=dict(os.environ, SOURCE_DATE_EPOCH=str(moment)))


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--build", type=pathlib.Path, required=True, help="build directory")
    parser.add_argument("--version", required=True)
    parser.add_argument("--makensis", default="", help="without it there is no installer")
    given = parser.parse_args()
    moment = epoch()
    package = given.build.resolve() / "package"
    shutil.rmtree(package, ignore_errors=True)
    linked = make_sbom.read_linked(given.build / "linked.txt")
    made = []
    for kind in ["zip", "setup"] if given.makensis else ["zip"]:
        makensis = given.makensis if kind == "setup" else ""
        stage = package / "stage" / kind
        stage_files(given.build, stage, bool(makensis))
        bill = make_sbom.make(stage, given.version, linked, moment, makensis)
        (stage / make_sbom.NAME).write_text(bill)
        for path in [*stage.rglob("*"), stage]:
            os.utime(path, (moment, moment))
        name = f"QorlixSRV-{given.version}-windows-x86"
        if makensis:
            made.append(package / f"{name}-setup.exe")
            make_installer(makensis, stage, package / "stage", given.version, made[-1], moment)
        else:
            made.append(package / f"{name}.zip")
            make_zip(stage, made[-1], moment)
    for path in made:
        print(f"{path.stat().st_size:9d} bytes  {path.relative_to(given.build.resolve())}")


if __name__ == "__main__":
    main()

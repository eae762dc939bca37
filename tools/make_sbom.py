#!/usr/bin/env python3
"""Writes the bill of materials of a package as SPDX 2.3 JSON.

It lists every file of the folder with its checksums, and what of the tool chain's libraries was
linked into the programs: that is read from the linker's maps, so it is what is there and not what
somebody thought. A library that no row below knows is an error.

The same files give the same bytes. The system has no licence text of its own, so nothing is said
about its licence.
"""
import argparse
import datetime
import hashlib
import json
import pathlib
import re
import subprocess
import sys
import uuid

NAME = "QorlixSRV.spdx.json"
NONE = "NOASSERTION"

# Identifier: name, who makes it, licence as its makers declare it, a remark, and the files of the
# tool chain that it comes in.
COMPONENTS = {
    "gcc-runtime": (
        "GCC runtime libraries (libgcc, libstdc++, libssp)",
        "Organization: Free Software Foundation",
        "GPL-3.0-or-later WITH GCC-exception-3.1", "See licenses/gcc-runtime.txt.",
        r"(libstdc\+\+|libsupc\+\+|libgcc|libgcc_eh|libssp)\.a|crt(begin|end)\.o"),
    "winpthreads": (
        "winpthreads", "Organization: mingw-w64 project", "MIT AND BSD-3-Clause",
        "The threads below the C++ library. See licenses/mingw-w64.txt.", r"lib(win)?pthread\.a"),
    "mingw-w64-crt": (
        "mingw-w64 runtime", "Organization: mingw-w64 project", "ZPL-2.1",
        "Start-up code, additions to the C library, import libraries. Parts are in the public "
        "domain or under other permissive licences; licenses/mingw-w64.txt names them all.",
        r"lib(mingw32|mingwex|moldname|msvcrt|kernel32|user32|advapi32|shlwapi|shell32|gdi32|"
        r"cfgmgr32|iphlpapi|ws2_32|ole32|psapi|version)\.a|(dll)?crt2u?\.o"),
}
INSTALLER = ("nsis", "NSIS", "Organization: NSIS contributors", "Zlib",
             "The installer's and the uninstaller's own program. See licenses/nsis.txt.")
TYPES = {".exe": "BINARY", ".dll": "BINARY", ".cpl": "BINARY", ".a": "ARCHIVE",
         ".md": "DOCUMENTATION", ".h": "SOURCE", ".c": "SOURCE", ".cpp": "SOURCE", ".txt": "TEXT"}


def components_in(map_file: pathlib.Path) -> dict:
    """Component: path of one file it came in; for what the linker took into one program."""
    taken = set()
    members = True
    for line in map_file.read_text().splitlines():
        members = members and not line.startswith(("Discarded", "Memory Config"))
        if members and (found := re.fullmatch(r"(\S.*\.a)\([^()]*\)", line)):
            taken.add(found.group(1))
        elif found := re.fullmatch(r"LOAD (/.*\.o)", line):
            taken.add(found.group(1))
    components = {}
    for path in sorted(taken):
        if not path.startswith("/"):
            continue  # an archive of our own
        name = pathlib.Path(path).name
        owners = [key for key, row in COMPONENTS.items() if re.fullmatch(row[4], name)]
        if not owners:
            sys.exit(f"sbom: {map_file.name}: no component is known to have {path}")
        components.setdefault(owners[0], path)
    return components


def version_of(path: str) -> str:
    """The version of the system's package that a file is from."""
    owner = subprocess.run(["dpkg-query", "-S", str(pathlib.Path(path).resolve())],
                           capture_output=True, text=True)
    if owner.returncode != 0:
        return NONE
    package = owner.stdout.split(":")[0]
    return subprocess.run(["dpkg-query", "-W", "-f", "${Version}", package], check=True,
                          capture_output=True, text=True).stdout


def describe_file(number: int, name: str, content: bytes) -> dict:
    entry = {
        "SPDXID": f"SPDXRef-File-{number}",
        "fileName": f"./{name}",
        "checksums": [{"algorithm": kind, "checksumValue": hashlib.new(kind, content).hexdigest()}
                      for kind in ("SHA1", "SHA256")],
        "licenseConcluded": NONE,
        "licenseInfoInFiles": [NONE],
        "copyrightText": NONE,
    }
    if kind := TYPES.get(pathlib.PurePath(name).suffix):
        entry["fileTypes"] = [kind]
    return entry


def describe_component(key: str, row: tuple, version: str) -> dict:
    name, supplier, licence, remark = row[:4]
    package = {
        "SPDXID": f"SPDXRef-Package-{key}", "name": name, "supplier": supplier,
        "downloadLocation": NONE, "filesAnalyzed": False, "licenseConcluded": NONE,
        "licenseDeclared": licence, "copyrightText": NONE, "comment": remark,
    }
    if version != NONE:
        package["versionInfo"] = version
    return package


def verification_code(files: list) -> str:
    sums = sorted(entry["checksums"][0]["checksumValue"] for entry in files)
    return hashlib.sha1("".join(sums).encode()).hexdigest()


def make(stage: pathlib.Path, version: str, linked: dict, created: int, makensis: str) -> str:
    """`linked`: path in the package, and the linker's map; `makensis`: empty without installer."""
    names = sorted(path.relative_to(stage).as_posix() for path in stage.rglob("*")
                   if path.is_file() and path.name != NAME)
    files = [describe_file(number, name, (stage / name).read_bytes())
             for number, name in enumerate(names, 1)]
    ids = {entry["fileName"][2:]: entry["SPDXID"] for entry in files}
    code = verification_code(files)
    product = {
        "SPDXID": "SPDXRef-Package-QorlixSRV", "name": "QorlixSRV", "versionInfo": version,
        "supplier": NONE, "downloadLocation": NONE, "filesAnalyzed": True,
        "packageVerificationCode": {"packageVerificationCodeValue": code,
                                    "packageVerificationCodeExcludedFiles": [f"./{NAME}"]},
        "licenseConcluded": NONE, "licenseDeclared": NONE, "licenseInfoFromFiles": [NONE],
        "copyrightText": NONE,
        "hasFiles": [entry["SPDXID"] for entry in files],
    }
    relations = [("SPDXRef-DOCUMENT", "DESCRIBES", product["SPDXID"])]
    relations += [(product["SPDXID"], "CONTAINS", entry["SPDXID"]) for entry in files]
    sources = {}
    for name, map_file in sorted(linked.items()):
        for key, path in sorted(components_in(pathlib.Path(map_file)).items()):
            sources.setdefault(key, path)
            relations.append((ids[name], "STATIC_LINK", f"SPDXRef-Package-{key}"))
    packages = [product] + [describe_component(key, COMPONENTS[key], version_of(path))
                            for key, path in sorted(sources.items())]
    if makensis:
        packages.append(describe_component(INSTALLER[0], INSTALLER[1:], version_of(makensis)))
        relations.append((product["SPDXID"], "DEPENDS_ON", f"SPDXRef-Package-{INSTALLER[0]}"))
    seed = f"{version} {code} {created} {json.dumps(packages)}"
    moment = datetime.datetime.fromtimestamp(created, datetime.timezone.utc)
    return json.dumps({
        "spdxVersion": "SPDX-2.3", "dataLicense": "CC0-1.0", "SPDXID": "SPDXRef-DOCUMENT",
        "name": f"QorlixSRV-{version}",
        "documentNamespace": f"urn:uuid:{uuid.uuid5(uuid.NAMESPACE_OID, seed)}",
        "creationInfo": {"created": moment.strftime("%Y-%m-%dT%H:%M:%SZ"),
                         "creators": ["Tool: make_sbom.py"]},
        "packages": packages, "files": files,
        "relationships": [{"spdxElementId": one, "relationshipType": kind,
                           "relatedSpdxElement": other} for one, kind, other in relations],
    }, indent=1) + "\n"


def read_linked(file: pathlib.Path) -> dict:
    """Lines of path in the package, an equals sign, and the linker's map."""
    pairs = (line.split("=", 1) for line in file.read_text().splitlines())
    return {pathlib.PurePosixPath(name).as_posix(): map_file for name, map_file in pairs}


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--stage", type=pathlib.Path, required=True, help="the package's folder")
    parser.add_argument("--version", required=True)
    parser.add_argument("--linked", type=pathlib.Path, required=True, help="programs, their maps")
    parser.add_argument("--created", type=int, required=True, help="seconds since 1970")
    parser.add_argument("--makensis", default="", help="the installer's maker, if there is one")
    given = parser.parse_args()
    sys.stdout.write(make(given.stage, given.version, read_linked(given.linked), given.created,
                          given.makensis))


if __name__ == "__main__":
    main()

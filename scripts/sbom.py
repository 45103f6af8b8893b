#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""usage: sbom.py BUILD VERSION NAME=FOLDER...

What the programs and libraries in each FOLDER, the tree of the package NAME, are made of and need: a bill
of materials in SPDX's JSON, in the documents of the tree. It lists

- each package whose shared objects are loaded, those of the other folders and of Debian, with what these
  load in their turn;
- each package whose headers were compiled in, as the build in the folder BUILD (ninja) knows: of some
  libraries that is all there is.

The time is $SOURCE_DATE_EPOCH, so that the same build gives the same bytes.
"""

from __future__ import annotations

import hashlib
import json
import os
import re
import subprocess
import sys
from datetime import datetime, timezone
from pathlib import Path
from typing import Dict, Iterable, NamedTuple, Tuple

MAKER = "Organization: Voxtrel maintainers"


class Package(NamedTuple):
    name: str
    version: str
    architecture: str
    is_ours: bool


# By the name that programs load it by: the package and the file.
Ours = Dict[str, Tuple[Package, Path]]


def output(*command: str) -> str:
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def is_elf(path: Path) -> bool:
    return path.is_file() and not path.is_symlink() and path.open("rb").read(4) == b"\x7fELF"


def elf_files(folder: Path) -> list[Path]:
    return sorted(path for path in folder.rglob("*") if is_elf(path))


def entries(path: Path, kind: str) -> list[str]:
    return re.findall(rf"\({kind}\).*\[(.*)\]", output("readelf", "-W", "--dynamic", str(path)))


class Debian:
    """Which installed package a file is of."""

    def __init__(self) -> None:
        self.architecture = output("dpkg", "--print-architecture").strip()
        self.objects: dict[str, str] = {}
        for name, path in re.findall(r"^\s*(\S+) \(.*\) => (\S+)$", output("/sbin/ldconfig", "-p"), re.M):
            self.objects.setdefault(name, path)

    def object(self, name: str, user: Path) -> Path:
        """As the loader finds it for its user, which may have libraries in a folder of its own."""
        for folder in ":".join(entries(user, "RUNPATH")).split(":"):
            path = Path(folder.replace("$ORIGIN", str(user.parent)), name)
            if folder and path.is_file():
                return path
        if name not in self.objects:
            sys.exit(f"sbom: {user} needs {name}, and the loader does not know it")
        return Path(self.objects[name])

    def owners(self, paths: Iterable[Path]) -> set[Package]:
        """Each file may be known by a name from before /lib became a link to /usr/lib."""
        names = {name for path in paths for name in self.spellings(path)}
        if not names:
            return set()
        found = subprocess.run(["dpkg-query", "-S", *sorted(names)], capture_output=True, text=True)
        owners = {line.split(": ")[0] for line in found.stdout.splitlines() if not line.startswith("diversion")}
        return {self.package(owner) for names in owners for owner in names.split(", ")}

    @staticmethod
    def spellings(path: Path) -> set[str]:
        real = str(path.resolve())
        return {str(path), real, re.sub("^/usr/lib", "/lib", real)}

    @staticmethod
    def package(name: str) -> Package:
        fields = output("dpkg-query", "-W", "-f", "${Package}\t${Version}\t${Architecture}", name)
        return Package(*fields.split("\t"), is_ours=False)


class Build:
    """What ninja knows: the objects of a linked file, and the headers of an object."""

    def __init__(self, folder: str) -> None:
        self.ninja = ("ninja", "-C", folder, "-t")
        targets = output(*self.ninja, "targets", "all")
        linked = re.findall(r"^(\S+): CXX_\w+_LINKER__", targets, re.M)
        self.targets = {Path(target).name: target for target in linked}
        self.headers: dict[str, set[Path]] = {}
        for block in output(*self.ninja, "deps").split("\n\n"):
            target, _, rest = block.strip().partition(": #deps")
            self.headers[target] = {Path(line.strip()) for line in rest.splitlines()[1:]}

    def headers_of(self, linked: str) -> set[Path]:
        """But for those of the build itself."""
        inputs = output(*self.ninja, "query", self.targets[linked]).splitlines()
        objects = [line.strip() for line in inputs if line.endswith(".o")]
        if not objects:
            sys.exit(f"sbom: the build knows no object of {linked}")
        return {path for name in objects for path in self.headers[name] if str(path).startswith("/usr/")}


class Bill:
    """What one tree is made of and needs."""

    def __init__(self, folder: Path, ours: Ours, debian: Debian, build: Build) -> None:
        self.compiled: set[Package] = set()
        files = elf_files(folder)
        users = list(files)
        objects: dict[str, Path] = {}
        while users:
            user = users.pop()
            for name in entries(user, "NEEDED"):
                if name not in objects:
                    objects[name] = ours[name][1] if name in ours else debian.object(name, user)
                    users.append(objects[name])
        self.loaded = {ours[name][0] for name in objects if name in ours}
        self.loaded |= debian.owners(path for name, path in objects.items() if name not in ours)
        for path in files:
            self.compiled |= debian.owners(build.headers_of(path.name))


def number(package: Package) -> str:
    return "SPDXRef-" + re.sub(r"[^A-Za-z0-9.-]", "-", package.name)


def described(package: Package) -> dict[str, object]:
    vendor = "voxtrel" if package.is_ours else "debian"
    locator = f"pkg:deb/{vendor}/{package.name}@{package.version}?arch={package.architecture}"
    return {
        "SPDXID": number(package),
        "name": package.name,
        "versionInfo": package.version,
        "supplier": MAKER if package.is_ours else "Organization: Debian",
        "downloadLocation": "NOASSERTION",
        "filesAnalyzed": False,
        "licenseConcluded": "NOASSERTION",
        "licenseDeclared": "Apache-2.0" if package.is_ours else "NOASSERTION",
        "copyrightText": "2026 The Voxtrel maintainers" if package.is_ours else "NOASSERTION",
        "externalRefs": [
            {"referenceCategory": "PACKAGE-MANAGER", "referenceType": "purl", "referenceLocator": locator}
        ],
    }


def document(package: Package, bill: Bill) -> str:
    others = sorted((bill.loaded | bill.compiled) - {package})
    relations = [("SPDXRef-DOCUMENT", "DESCRIBES", number(package))]
    relations += [(number(package), "DYNAMIC_LINK", number(other)) for other in sorted(bill.loaded - {package})]
    relations += [(number(other), "BUILD_DEPENDENCY_OF", number(package)) for other in sorted(bill.compiled)]
    content = {
        "packages": [described(each) for each in (package, *others)],
        "relationships": [
            {"spdxElementId": one, "relationshipType": kind, "relatedSpdxElement": other}
            for one, kind, other in relations
        ],
    }
    digest = hashlib.sha256(json.dumps(content, sort_keys=True).encode()).hexdigest()
    time = datetime.fromtimestamp(int(os.environ.get("SOURCE_DATE_EPOCH", "0")), timezone.utc)
    head = {
        "spdxVersion": "SPDX-2.3",
        "dataLicense": "CC0-1.0",
        "SPDXID": "SPDXRef-DOCUMENT",
        "name": f"{package.name}-{package.version}-{package.architecture}",
        "documentNamespace": f"urn:sha256:{digest}",
        "creationInfo": {"created": time.strftime("%Y-%m-%dT%H:%M:%SZ"), "creators": [MAKER]},
    }
    return json.dumps({**head, **content}, indent=1) + "\n"


def main(build_folder: str, version: str, *trees: str) -> None:
    debian, build = Debian(), Build(build_folder)
    packages = {}
    for name, folder in (tree.split("=", 1) for tree in trees):
        packages[Path(folder)] = Package(name, version, debian.architecture, True)
    ours: Ours = {}
    for tree, package in packages.items():
        for path in elf_files(tree):
            for name in entries(path, "SONAME"):
                ours[name] = (package, path)
    for tree, package in packages.items():
        prefix = tree / "usr" if (tree / "usr").is_dir() else tree
        folder = prefix / "share/doc" / package.name
        folder.mkdir(parents=True, exist_ok=True)
        # The name has the architecture: libraries of several may be installed beside each other.
        bill = folder / f"{package.name}_{package.architecture}.spdx.json"
        bill.write_text(document(package, Bill(tree, ours, debian, build)), encoding="utf-8")
        bill.chmod(0o644)


if __name__ == "__main__":
    if len(sys.argv) < 4:
        sys.exit(__doc__)
    main(*sys.argv[1:])

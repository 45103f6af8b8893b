#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""usage: symbol_sizes.py SHARED_OBJECT. What takes the room: its sections, its classes with the room
that each is of, and its largest functions and tables. Needs the symbols for debuggers."""
import collections
import pathlib
import re
import subprocess
import sys

ROOMS = ("vocabulary", "ipc", "profile", "client")
SMALLEST_SECTION = 512
LARGEST = 12


def sections(path):
    """Name and bytes of those that are in the file and stay when it is stripped."""
    listed = subprocess.run(["readelf", "--section-headers", "--wide", path], check=True, text=True,
                            stdout=subprocess.PIPE).stdout
    row = re.compile(r"^ *\[ *\d+\] (\.\S+) +(\S+) +\S+ \S+ (\S+) \S+ +[A-Z]*A", re.MULTILINE)
    return [(name, int(size, 16)) for name, kind, size in row.findall(listed) if kind != "NOBITS"]


def symbols(path):
    """Name and bytes, each address once."""
    listed = subprocess.run(["nm", "--demangle", "--print-size", "--defined-only", path], check=True, text=True,
                            stdout=subprocess.PIPE).stdout
    found = {}
    for address, size, kind, name in re.findall(r"^(\S+) (\S+) (\S) (.*)$", listed, re.MULTILINE):
        if kind not in "bB":
            found.setdefault(address, (name, int(size, 16)))
    return list(found.values())


def class_rooms():
    """The room of each class that a header of the library declares."""
    return {name: room for room in ROOMS for header in pathlib.Path(room).rglob("*.h")
            for name in re.findall(r"^(?:class|struct) (?:VOXTREL_\S+ )?(\w+)", header.read_text(), re.MULTILINE)}


def owner(name, rooms):
    """The class that a symbol is of, else that of its first argument."""
    named = re.search(r"TTS::(?:\(anonymous namespace\)::)?(\w+)::", name.split("(", 1)[0]) or \
        re.search(r"(?:vtable|VTT|typeinfo|typeinfo name) for .*TTS::(\w+)", name)
    if named and named[1] in rooms:
        return f"{rooms[named[1]]}: {named[1]}"
    mentioned = [word for word in re.findall(r"TTS::(\w+)", name) if word in rooms]
    return f"{rooms[mentioned[0]]}: functions with {mentioned[0]}" if mentioned else "other"


def print_rows(rows):
    for name, size in sorted(rows, key=lambda row: -row[1]):
        print(f"{size:8} {name[:110]}")


def main():
    path, = sys.argv[1:]
    print_rows(row for row in sections(path) if row[1] >= SMALLEST_SECTION)
    rooms = class_rooms()
    found = symbols(path)
    by_class = collections.Counter()
    for name, size in found:
        by_class[owner(name, rooms)] += size
    print()
    print_rows(by_class.items())
    print()
    print_rows(sorted(found, key=lambda row: -row[1])[:LARGEST])


if __name__ == "__main__":
    main()

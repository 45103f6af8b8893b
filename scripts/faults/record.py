# SPDX-License-Identifier: Apache-2.0
"""What the preloaded library (tests/faults/injection.cpp) writes of the calls of a program."""
import os
import pathlib
import re
import struct
import subprocess

HEADER = pathlib.Path(__file__).parents[2] / "tests/faults/injection.h"
NUMBERS = {name: int(value) for name, value in re.findall(r"(k\w+) = (\d+);", HEADER.read_text())}
HEAD = struct.Struct("<IIII")  # calls, failed, frames, reserved
FRAME = struct.Struct("<Q")
PLACE = struct.Struct("<8sQ")
MAPPINGS_AT = HEAD.size + FRAME.size * NUMBERS["kMaxFrames"]
PLACES_AT = MAPPINGS_AT + NUMBERS["kMappingsSize"]
RECORD_SIZE = PLACES_AT + PLACE.size * NUMBERS["kMaxPlaces"]


class Record:
    def __init__(self, path):
        self.path = path

    def clear(self):
        with open(self.path, "wb") as file:
            file.truncate(RECORD_SIZE)

    def _before_places(self):
        with open(self.path, "rb") as file:
            return file.read(PLACES_AT)

    def calls(self):
        return HEAD.unpack_from(self._before_places())[0]

    def failed(self):
        return HEAD.unpack_from(self._before_places())[1]

    def places(self, call):
        """How often the call was made, and the n of each place that it came from."""
        count = min(self.calls(), NUMBERS["kMaxPlaces"])
        with open(self.path, "rb") as file:
            file.seek(PLACES_AT)
            made = PLACE.iter_unpack(file.read(PLACE.size * count))
        name = call.encode()[:8].ljust(8, b"\0")
        places = [place for other, place in made if other == name]
        first = {}
        for number, place in enumerate(places, 1):
            first.setdefault(place, number)
        return len(places), list(first.values())

    def stack(self):
        """Where the call was made, as lines of text."""
        head = self._before_places()
        count = HEAD.unpack_from(head)[2]
        frames = struct.unpack_from(f"<{count}Q", head, HEAD.size)
        text = head[MAPPINGS_AT:].split(b"\0")[0].decode(errors="replace")
        bases, ranges = {}, []
        for line in text.splitlines():
            found = re.match(r"([0-9a-f]+)-([0-9a-f]+) \S+ ([0-9a-f]+) \S+ \d+\s+(/\S+)", line)
            if found:
                low, high, offset = (int(found[i], 16) for i in (1, 2, 3))
                bases.setdefault(found[4], low - offset)
                ranges.append((low, high, found[4]))
        lines = []
        for frame in frames:
            for low, high, name in ranges:
                if low <= frame < high and "fault_injection" not in name:
                    lines.append(place_of(name, frame - bases[name] - 1))
        return [line for line in lines if line]


def place_of(module, offset):
    if module.startswith(("/lib", "/usr/lib")):
        return f"{os.path.basename(module)}+{offset:x}"
    said = subprocess.run(["addr2line", "-Cfpe", module, hex(offset)], capture_output=True, text=True)
    return re.sub(r" at \S*/(\w[\w./-]*:\d+).*", r" (\1)", said.stdout.strip())[:160]

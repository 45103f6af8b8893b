#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""usage: golden_seeds.py TARGET OUT. Makes seeds of a fuzz target out of the golden dumps of the wire."""
import pathlib
import sys

DUMPS = pathlib.Path(__file__).resolve().parent.parent / "tests" / "ipc" / "golden"


def read_dump(path):
    """The code, the request and the reply; a binder in the request is left out."""
    code, parts, part = 0, {"request": b"", "reply": b""}, None
    for line in path.read_text().splitlines():
        words = line.split("|")[0].split()
        if words[:1] == ["code"]:
            code = int(words[1])
        elif words in (["request"], ["reply"]):
            part = words[0]
        elif part and words and words != ["binder"]:
            parts[part] += bytes.fromhex("".join(words))
    return code, parts["request"], parts["reply"]


def stub_seed(code, request, _reply):
    """Its code, the length of a stored language, and no words behind the request."""
    return bytes([code, 5, 0]) + request


def proxy_seed(code, request, reply):
    """The first byte picks the operation and, for a value, the key."""
    if code == 28:
        pick = 0
    elif code == 21:
        pick = (request[4] + 1) << 2 | 1
    else:
        pick = 2 if code in (13, 14, 27) else 3
    return bytes([pick]) + reply


def service_seed(code, request, _reply):
    """With voices, two clients that have joined, and the request from the process that it names."""
    first = (101).to_bytes(4, "little")
    joined = bytes([0, 7, 0, 0, 7, 1, 0])
    body = first + request[4:]
    return joined + bytes([14, 0, code, len(body)]) + body + bytes(16)


MAKERS = {"stub_fuzz": stub_seed, "proxy_fuzz": proxy_seed, "service_fuzz": service_seed}


def main():
    target, out = sys.argv[1], pathlib.Path(sys.argv[2])
    dumps = sorted(DUMPS.glob("*.txt"))
    if not dumps:
        sys.exit(f"no dumps in {DUMPS}")
    out.mkdir(parents=True, exist_ok=True)
    for path in dumps:
        (out / f"golden-{path.stem}").write_bytes(MAKERS[target](*read_dump(path)))


if __name__ == "__main__":
    main()

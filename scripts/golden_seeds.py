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


# What a client does to ask for it, as fuzz/client reads that; behind it come the requests.
OPERATIONS = {
    1: [6, 2, 72, 105, 7], 2: [7, 7], 3: [8, 7], 5: [9, 0, 1], 10: [9, 1, 1], 13: [14, 0],
    14: [14, 10, 3, 0], 19: [14, 1], 20: [14, 2], 22: [9, 3, 0], 24: [1], 25: [11, 7], 26: [11, 8],
    27: [14, 3],
}
SENSE = [0, 0]  # a request is answered with sense, and nothing happens meanwhile


def client_seed(code, request, reply):
    """A client that has joined a service of its own process and holds the lock asks once."""
    joined = [0, 1, 0, 0] + 2 * SENSE + [1, 11, 7] + SENSE
    answer = [5, len(reply), *reply, 0]
    if code == 21:
        operation = [14, 10, request[4], 1]
    elif code == 12:
        text = [2, 101, 110] if request[4] == 14 else []
        operation = [14, 9, request[4], 0, 0, 0, 100, *text]
        operation += SENSE if request[4] in (2, 4, 6, 8, 10, 12) else []  # is it switched on?
    elif code == 28:  # another client joins
        renewed = [1, 2, 1, 0, 1, 0]
        return bytes(joined + renewed + SENSE + answer)
    else:
        operation = OPERATIONS.get(code, [14, 3])
        operation += SENSE if code in (1, 2, 3) else []  # is speech switched on?
    return bytes(joined + [1] + operation + answer)


MAKERS = {"stub_fuzz": stub_seed, "proxy_fuzz": proxy_seed, "service_fuzz": service_seed,
          "client_fuzz": client_seed}


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

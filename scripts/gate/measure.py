#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""usage: measure.py ARCHITECTURE BUILD COUNTER: counts what each operation of bench/gate/gate_peer.cpp
needs outside of the kernel. ARCHITECTURE, x86-64 or arm, is that of the build tree BUILD; COUNTER is the
emulator's plugin, built for this machine. Prints one line a figure, as in bench/gate.txt."""

import os
import pathlib
import statistics
import subprocess
import sys
import tempfile
import threading

# A processor that is the same everywhere: the C library chooses some of its code by what the
# processor can do.
EMULATORS = {
    "x86-64": ["qemu-x86_64", "-cpu", "qemu64"],
    "arm": ["qemu-arm", "-cpu", "cortex-a15", "-L", "/usr/arm-linux-gnueabihf"],
}
# How the C library comes by memory that another thread has freed depends on how the threads take
# turns. With these it comes by it in one way.
ALLOCATOR = "glibc.malloc.arena_max=1:glibc.malloc.tcache_count=60000"
RUNS = 3  # the median is the figure
SECONDS = 120  # that a run may take on a busy machine


class Peers:
    """A service manager, a service and a client in a private folder."""

    def __init__(self, architecture, build, counter, folder):
        self.emulator = EMULATORS[architecture]
        self.build = build
        self.counter = counter
        self.folder = folder
        self.processes = []
        self.environment = {
            "PATH": os.environ["PATH"],
            "VOXTREL_BINDER_SOCKET": str(folder / "binder"),
            "GLIBC_TUNABLES": ALLOCATOR,
        }

    def start(self, program, *arguments, counts=None, errors=None):
        plugin = ["-plugin", f"{self.counter},out={counts}"] if counts else []
        process = subprocess.Popen(
            [*self.emulator, *plugin, self.build / program, *arguments],
            env=self.environment,
            stdin=subprocess.PIPE,
            stdout=subprocess.PIPE,
            stderr=errors,
            text=True,
        )
        self.processes.append(process)
        return process

    def end(self):
        for process in self.processes:
            process.kill()

    def run(self):
        """What the client prints."""
        limit = threading.Timer(SECONDS, self.end)
        limit.start()
        try:
            return self.run_client()
        finally:
            limit.cancel()
            self.end()
            for process in self.processes:
                process.communicate()

    def run_client(self):
        manager = self.start("platform/host/voxtrel-servicemanager", errors=subprocess.PIPE)
        if not manager.stderr.readline().endswith("ready\n"):
            sys.exit("gate: the service manager did not start")
        service = self.start("bench/gate/gate_peer", "serve", counts=self.folder / "service")
        if service.stdout.readline() != "ready\n":
            sys.exit("gate: the service did not start")
        client = self.start("bench/gate/gate_peer", "call", counts=self.folder / "client")
        output = client.stdout.read()
        if client.wait() != 0:
            sys.exit(f"gate: the client left with {client.returncode}")
        return output


def marks(path):
    """(instructions, system calls) by the number of the mark."""
    lines = [line.split() for line in path.read_text().splitlines()]
    return {int(number): (int(first), int(second)) for number, first, second in lines}


def needed(counts, first_mark, difference):
    """What one operation needs, by what a long sequence needs more than a short one."""
    short, long = (
        [end - begin for begin, end in zip(counts[n], counts[n + 1])]
        for n in (first_mark, first_mark + 2)
    )
    return [(more - less) / difference for less, more in zip(short, long)]


def measure(*where):
    """(instructions, system calls) by the figure's name, of one run."""
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        output = Peers(*where, folder).run()
        counts = {side: marks(folder / side) for side in ("client", "service")}
    figures = {}
    for index, line in enumerate(output.splitlines()):
        difference, operation = line.split(maxsplit=1)
        for side, of_side in counts.items():
            figures[f"{operation}, {side}"] = needed(of_side, 4 * index, int(difference))
    return figures


def main(architecture, build, counter):
    # Threads take turns here as they do on a device's one processor.
    os.sched_setaffinity(0, {min(os.sched_getaffinity(0))})
    runs = [measure(architecture, pathlib.Path(build), counter) for _ in range(RUNS)]
    for name in runs[0]:
        counts = [round(statistics.median(each)) for each in zip(*(run[name] for run in runs))]
        print(name, architecture, *counts, sep="  ")


if __name__ == "__main__":
    if len(sys.argv) != 4 or sys.argv[1] not in EMULATORS:
        sys.exit(__doc__)
    main(*sys.argv[1:])

# SPDX-License-Identifier: Apache-2.0
"""The output module of speech-dispatcher, and the server's side of its protocol."""
import os
import select
import subprocess
import time

from checks import check_end, check_lines
from world import HANG, Broken

ENDS = ("702", "703", "704")  # whole, stopped, paused
TIMES = 2


class Module:
    """Two messages, one after the other. One that the module takes has one end, and a module that
    ends by itself says why."""

    program = name = "sd_voxtrel"

    def run(self, world, point):
        world.ensure_peers()
        with open(world.folder / "module.log", "wb") as log, subprocess.Popen(
                [world.program(self.program)], env=world.injected(self.program, point),
                stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=log, cwd=world.folder) as module:
            server = Server(module)
            try:
                ends = server.talk()
                status = server.finish()
            finally:
                module.kill()
        told = world.text("module.log")
        check_end(self.name, status, told + server.said)
        why = "".join(line + "\n" for line in server.said.splitlines() if line.startswith("399-"))
        check_lines(status, why + told, point)
        if status == 1 and why.count("\n") != 1 and point.call != "write":
            raise Broken(f"status 1 with this: {server.said!r}")
        if point.must_succeed and ends != ["702"] * TIMES:
            raise Broken(f"without a fault: {server.said!r} {told!r}")
        # What it says goes nowhere once a write fails, as where the server has gone.
        if status == 0 and not server.said.endswith("210 OK QUIT\n") and point.call != "write":
            raise Broken(f"it has ended with 0 and said nothing: {server.said!r} {told!r}")
        if status == 0 and point.times == 1 and "702" not in ends and point.call != "write":
            raise Broken(f"of {TIMES} messages none was whole: {server.said!r} {told!r}")
        world.expect_peers(world.manager, world.service)
        world.speed = world.check_served()


class Server:
    def __init__(self, module):
        self.module = module
        self.said = ""
        self.unread = b""

    def talk(self):
        """@return how the messages ended that it has taken."""
        ends = []
        self.ask("INIT")
        self.ask("AUDIO", "audio_output_method=pulse\n.")
        self.ask("LOGLEVEL", "log_level=0\n.")
        self.ask("DEBUG ON debug.log")
        self.ask("LIST VOICES")
        for _ in range(TIMES):
            if self.ask("SPEAK", "<speak>One, two, three.</speak>\n.").startswith("200"):
                ends.append(self.end_of_message())
        return ends

    def ask(self, *commands):
        answer = ""
        for command in commands:
            self.say(command)
            answer = self.line()
            while answer[3:4] == "-":
                answer = self.line()
        return answer

    def say(self, text):
        try:
            os.write(self.module.stdin.fileno(), text.encode() + b"\n")
        except BrokenPipeError:
            pass  # it has ended

    def end_of_message(self):
        while True:
            line = self.line()
            if not line or line.startswith(("399", *ENDS)):
                return line[:3]

    def finish(self):
        """@return its status."""
        self.say("QUIT")
        while line := self.line():
            if line.startswith(("701", *ENDS)):
                raise Broken(f"a second end: {self.said!r}")
        try:
            return self.module.wait(HANG)
        except subprocess.TimeoutExpired:
            raise Broken("the module hangs at its end") from None

    def line(self):
        """@return empty at the end of what it says."""
        end = time.monotonic() + HANG
        while b"\n" not in self.unread:
            if not select.select([self.module.stdout], [], [], max(0, end - time.monotonic()))[0]:
                raise Broken(f"the module hangs: {self.said!r}")
            piece = os.read(self.module.stdout.fileno(), 65536)
            if not piece:
                return ""
            self.unread += piece
        line, _, self.unread = self.unread.partition(b"\n")
        self.said += line.decode(errors="replace") + "\n"
        return line.decode(errors="replace")

# SPDX-License-Identifier: Apache-2.0
"""usage: soak_client.py LEDGER SEED. What a process with a client in Python does until it is ended.

Orders and ledger are those of ClientLife.
"""

from __future__ import annotations

import os
import random
import select
import sys
import threading
import time
from typing import Callable

import voxtrel

BEAT = 0.02
MOST_OPEN = 200
TO_BE_CALM = 180.0
TEXTS = ("Hello.", "Hello.", "Two short sentences. Both are in English.", "It rains. " * 500)


def words(outcome: voxtrel.Outcome) -> tuple[int, int]:
    return int(outcome.kind), int(outcome.status)


class Ledger:
    def __init__(self, path: str) -> None:
        self.file = os.open(path, os.O_WRONLY | os.O_CREAT | os.O_APPEND, 0o600)

    def write(self, *words: object) -> None:
        os.write(self.file, (" ".join(map(str, words)) + "\n").encode())


class Heartbeat(threading.Thread):
    """Measures for how many seconds this process has not run."""

    def __init__(self) -> None:
        super().__init__(daemon=True)
        self.last = time.monotonic()
        self.total = 0.0
        self.start()

    def run(self) -> None:
        while True:
            time.sleep(BEAT)
            now = time.monotonic()
            self.total += max(0.0, now - self.last - BEAT)
            self.last = now

    def missed(self) -> float:
        return self.total + max(0.0, time.monotonic() - self.last - BEAT)


class Life:
    def __init__(self, ledger: str, seed: int) -> None:
        self.ledger = Ledger(ledger)
        self.random = random.Random(seed)
        self.heartbeat = Heartbeat()
        self.open: dict[int, voxtrel.Utterance] = {}
        self.clients = 0
        self.begin()

    def begin(self) -> None:
        self.clients += 1
        self.client = voxtrel.Client("soak")
        self.client.on_event(self.handle)

    def end(self) -> None:
        self.call("end", 4.0, self.client.close)
        for number, utterance in self.open.items():
            self.ledger.write("closed", self.clients, number, *words(utterance.outcome))
        self.open.clear()

    def handle(self, event: voxtrel.Event) -> None:
        if event.outcome is None:
            return
        self.ledger.write("ended", self.clients, event.utterance, *words(event.outcome))
        utterance = self.open.pop(event.utterance, None)
        if utterance is not None and words(utterance.outcome) != words(event.outcome):
            self.ledger.write("differs", self.clients, event.utterance)

    def call(self, name: str, deadline: float, make: Callable[[], object]) -> None:
        begun, missed = time.monotonic(), self.heartbeat.missed()
        try:
            make()
        except voxtrel.Error:
            pass  # whatever it was, it came in time or not
        taken = time.monotonic() - begun - (self.heartbeat.missed() - missed)
        self.ledger.write("called", name, int((taken - deadline) * 1000))

    def say(self) -> None:
        loss = self.random.choice(list(voxtrel.OnLoss))
        utterance = self.client.say(self.random.choice(TEXTS), on_loss=loss)
        self.ledger.write("said", self.clients, utterance.number)
        self.open[utterance.number] = utterance

    def request(self) -> None:
        client, deadline = self.client, self.random.choice((0.0, 0.02, 0.1, 0.5, 2.0))
        choices: tuple[tuple[str, float, Callable[[], object]], ...] = (
            ("stop", 0.0, client.stop),
            ("settings", deadline, lambda: client.settings(deadline)),
            ("features", deadline, lambda: client.features(deadline)),
            ("waitForAll", deadline, lambda: client.wait_for_all(deadline)),
            ("lock", deadline, lambda: client.lock(deadline).release()),
        )
        self.call(*self.random.choice(choices))

    def act(self) -> None:
        self.client.dispatch()
        choice = self.random.random()
        if len(self.open) > MOST_OPEN:
            self.call("stop", 0.0, self.client.stop)
        elif choice < 0.6:
            self.call("say", 0.0, self.say)
        elif choice < 0.99:
            self.request()
        else:
            self.end()
            self.begin()

    def become_calm(self) -> None:
        self.client.stop()
        self.client.wait_for_all(TO_BE_CALM)
        self.client.dispatch()

    def live(self) -> None:
        is_calm = False
        while True:
            pause = 1.0 if is_calm else self.random.uniform(0, 0.08)
            if not select.select([sys.stdin], [], [], pause)[0]:
                if not is_calm:
                    self.act()
                continue
            order = os.read(0, 100).decode().strip() or "end"
            if order == "end":
                break
            is_calm = order == "calm"
            if is_calm:
                self.become_calm()
            print(order, flush=True)
        self.end()
        self.ledger.write("left")
        print("end", flush=True)


Life(sys.argv[1], int(sys.argv[2])).live()

# SPDX-License-Identifier: Apache-2.0
"""What Client.say of Python takes in the caller, the service being a fake one."""

from __future__ import annotations

import statistics
import time

import voxtrel
from voxtrel.testing import FakeService

SENTENCE = "The next stop is the central station."
ROUNDS = 50
UTTERANCES = 200


def times_of_a_round(client: voxtrel.Client) -> list[float]:
    """Microseconds of each call; the threads of the library go on in between."""
    times = []
    for _ in range(UTTERANCES):
        begin = time.perf_counter_ns()
        client.say(SENTENCE)
        times.append((time.perf_counter_ns() - begin) / 1000)
    client.wait_for_all(60)
    return times


def main() -> None:
    with FakeService() as fake, voxtrel.Client("bench", fake=fake) as client:
        client.wait_until_connected(60)
        times = [each for _ in range(ROUNDS) for each in times_of_a_round(client)]
    middle = statistics.median(times)
    mean = statistics.fmean(times)
    print(f"say from Python: median {middle:.2f} us, mean {mean:.2f} us of {len(times)} calls")
    print(f"figure python_say_us {middle:.2f}")


main()

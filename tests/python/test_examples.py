# SPDX-License-Identifier: Apache-2.0
"""The examples do what they say, also where the service is killed meanwhile."""

from __future__ import annotations

import os
import subprocess
import sys
from pathlib import Path

from conftest import Service, eventually, output_of

FOLDER = Path(os.environ["VOXTREL_SOURCE_DIR"]) / "examples/python"
SENTENCE = "This sentence is long enough to be cut off in its middle."

Result = tuple[str, str, int]


def run(name: str, *texts: str) -> Result:
    return finish(start(name, *texts))


def start(name: str, *texts: str) -> subprocess.Popen[str]:
    return subprocess.Popen(
        [sys.executable, str(FOLDER / name), *texts],
        stdout=subprocess.PIPE,
        stderr=subprocess.PIPE,
        text=True,
    )


def finish(example: subprocess.Popen[str]) -> Result:
    output, errors = output_of(example)
    return output, errors, example.returncode


def run_with_a_death(service: Service, name: str, *texts: str) -> Result:
    """The service dies while the example is heard, and another one is started."""
    example = start(name, *texts)
    eventually(lambda: service.is_heard(example.pid), "the voice of the example")
    service.kill()
    service.start()
    return finish(example)


def test_there_are_three_short_ones() -> None:
    examples = sorted(FOLDER.glob("*.py"))
    assert [example.name for example in examples] == ["loop.py", "speak.py", "survive.py"]
    assert all(len(example.read_text().splitlines()) <= 20 for example in examples)


def test_speak_speaks(service: Service) -> None:
    assert run("speak.py", "Hello.") == ("spoken to its end\n", "", 0)


def test_speak_tells_that_the_service_died(service: Service) -> None:
    output, errors, status = run_with_a_death(service, "speak.py", SENTENCE)
    assert "there is no connection to the service" in output
    assert (errors, status) == ("", 1)


def test_loop_tells_what_becomes_of_each(service: Service) -> None:
    said = "One.: spoken to its end\nTwo.: spoken to its end\n"
    assert run("loop.py", "One.", "Two.") == (said, "", 0)


def test_loop_tells_of_each_that_the_service_died(service: Service) -> None:
    output, errors, status = run_with_a_death(service, "loop.py", SENTENCE, "Two.")
    assert output.count("there is no connection to the service") == 2
    assert (errors, status) == ("", 0)


def test_survive_speaks(service: Service) -> None:
    assert run("survive.py", "Hello.") == ("spoken to its end\n", "", 0)


def test_survive_speaks_again_after_the_service_died(service: Service) -> None:
    said = "the service is gone: it is said again\nspoken to its end\n"
    assert run_with_a_death(service, "survive.py", SENTENCE) == (said, "", 0)

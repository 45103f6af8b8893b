# SPDX-License-Identifier: Apache-2.0
"""Applications that check their types can rely on ours."""

from __future__ import annotations

import os
import subprocess
import sys
from pathlib import Path

ROOT = Path(os.environ["VOXTREL_SOURCE_DIR"])


def mypy(*arguments: object, folder: Path) -> subprocess.CompletedProcess[str]:
    cache = ["--cache-dir", os.environ["TMPDIR"] + "/mypy"]
    command = [sys.executable, "-m", "mypy", "--strict", "--python-version", "3.9", *cache]
    return subprocess.run(
        [*command, *map(str, arguments)],
        cwd=folder,
        env={**os.environ, "MYPYPATH": str(ROOT / "python")},
        capture_output=True,
        text=True,
    )


def test_the_module_is_typed_strictly() -> None:
    done = mypy("-p", "voxtrel", folder=ROOT / "python")
    assert done.returncode == 0, done.stdout


def test_examples_and_tests_are_typed_strictly() -> None:
    for folder in ("examples/python", "tests/python", "bench/python"):
        done = mypy(".", folder=ROOT / folder)
        assert done.returncode == 0, done.stdout


def test_wrong_use_is_found(tmp_path: Path) -> None:
    program = tmp_path / "wrong.py"
    program.write_text("import voxtrel\nvoxtrel.Client().say('a', speed='fast').wait().heared\n")
    done = mypy(program, folder=tmp_path)
    assert done.stdout.count("error:") == 2, done.stdout
    assert "incompatible type" in done.stdout and "heared" in done.stdout

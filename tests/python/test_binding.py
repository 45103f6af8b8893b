# SPDX-License-Identifier: Apache-2.0
"""The module says the same as the headers of C."""

from __future__ import annotations

import ctypes
import os
import re
import shutil
import subprocess
import sys
import zipfile
from pathlib import Path
from typing import Any

import pytest
from voxtrel import _native as native
from voxtrel import _values as values
from voxtrel._convert import _voice

ROOT = Path(os.environ["VOXTREL_SOURCE_DIR"])
HEADERS = [ROOT / "voxtrel/voxtrel.h", ROOT / "voxtrel/testing/fake.h"]

# `Client.on_event` and `Client.dispatch` take the events one by one instead, so that what a handler
# raises comes out of them.
NOT_USED = {"vx_on_event", "vx_dispatch"}

FUNCTIONS = {**native.FUNCTIONS, **native.TESTING_FUNCTIONS}

ENUMS = {
    "VX_OUTCOME_": values.OutcomeKind,
    "VX_BY_": values.Stopper,
    "VX_EVENT_": values.EventKind,
    "VX_CHANGED_": values.Setting,
    "VX_SWITCH_": values.Switch,
    "VX_LOCK_": values.LockState,
    "VX_REACH_": values.Reach,
}


def declarations() -> str:
    text = "\n".join(header.read_text() for header in HEADERS)
    return re.sub(r"/\*.*?\*/", "", text, flags=re.S)


def constants() -> dict[str, int]:
    found = re.findall(r"\b(VX_[A-Z_]+) = (-?\d+)", declarations())
    return {name: int(number) for name, number in found}


def names_of(enum: type[values._OpenEnum], prefix: str) -> dict[str, int]:
    return {prefix + member.name: member.value for member in enum}


def test_binds_every_function() -> None:
    declared = set(re.findall(r"^vx_status (vx_\w+)\(", declarations(), flags=re.M))
    assert len(declared) > 90
    assert set(FUNCTIONS) == declared - NOT_USED


def test_functions_have_as_many_parameters_as_in_c() -> None:
    for name, parameters in re.findall(
        r"^vx_status (vx_\w+)\(([^)]*)\);", declarations(), flags=re.M
    ):
        if name not in NOT_USED:
            assert len(FUNCTIONS[name]) == parameters.count(",") + 1, name


@pytest.mark.parametrize("prefix", ENUMS)
def test_enums_have_the_numbers_of_c(prefix: str) -> None:
    in_c = {name: value for name, value in constants().items() if name.startswith(prefix)}
    assert names_of(ENUMS[prefix], prefix) == in_c  # type: ignore[arg-type]


def test_statuses_and_reactions_to_loss_have_the_numbers_of_c() -> None:
    in_c = constants()
    for status in values.Status:
        assert in_c[f"VX_{status.name}"] == status
    for on_loss in values.OnLoss:
        assert in_c[f"VX_{on_loss.name}"] == on_loss
    others = {name for name in in_c if not name.startswith(tuple(ENUMS))}
    assert others == {f"VX_{member.name}" for member in [*values.Status, *values.OnLoss]} | {
        "VX_FOREVER",
        "VX_CLIENT_DEADLINE",
        "VX_THREAD_OF_LIBRARY",
        "VX_THREAD_OF_APPLICATION",
    }
    assert in_c["VX_FOREVER"] == native.FOREVER
    assert in_c["VX_CLIENT_DEADLINE"] == native.CLIENT_DEADLINE
    assert in_c["VX_THREAD_OF_APPLICATION"] == native.THREAD_OF_APPLICATION


STRUCTURES = {
    "vx_position": native.Position,
    "vx_outcome": native.RawOutcome,
    "vx_event": native.RawEvent,
    "vx_voice": native.RawVoice,
    "vx_peer": native.RawPeer,
    "vx_profile_output": native.RawProfileOutput,
}


def test_structures_lie_in_memory_as_in_c(tmp_path: Path) -> None:
    lines = ['#include <stdio.h>', '#include "voxtrel/voxtrel.h"', "int main(void) {"]
    expected = []
    for name, structure in STRUCTURES.items():
        lines.append(f'printf("%zu\\n", sizeof({name}));')
        expected.append(ctypes.sizeof(structure))
        for field, *_ in structure._fields_:
            lines.append(f'printf("%zu\\n", offsetof({name}, {field}));')
            expected.append(getattr(structure, field).offset)
    lines.append("return 0; }")
    source, program = tmp_path / "sizes.c", tmp_path / "sizes"
    source.write_text("\n".join(lines))
    subprocess.run(["cc", "-I", ROOT, "-o", program, source], check=True)
    printed = subprocess.run([program], check=True, capture_output=True, text=True).stdout
    assert [int(line) for line in printed.split()] == expected


def import_with(library: str, module: str = "voxtrel") -> str:
    done = subprocess.run(
        [sys.executable, "-c", f"import {module}"],
        env={**os.environ, "VOXTREL_LIBRARY": library},
        capture_output=True,
        text=True,
    )
    assert done.returncode == 1
    return done.stderr.splitlines()[-1]


def test_says_what_to_do_where_there_is_no_library(tmp_path: Path) -> None:
    said = import_with(str(tmp_path / "none.so"))
    assert said.startswith("ImportError") and "libvoxtrel1" in said and "VOXTREL_LIBRARY" in said


def test_says_which_package_has_the_fake_service(tmp_path: Path) -> None:
    library = tmp_path / "libvoxtrel.so.1"
    library.symlink_to(os.environ["VOXTREL_LIBRARY"])
    said = import_with(str(library), "voxtrel.testing")
    assert said.startswith("ImportError") and "libvoxtrel-dev" in said


def test_says_that_a_library_is_another() -> None:
    assert "vx_describe" in import_with("libc.so.6")


def test_finds_the_library_by_the_loader(tmp_path: Path) -> None:
    (tmp_path / "libvoxtrel.so.1").symlink_to(os.environ["VOXTREL_LIBRARY"])
    environment = {**os.environ, "LD_LIBRARY_PATH": str(tmp_path)}
    del environment["VOXTREL_LIBRARY"]
    subprocess.run([sys.executable, "-c", "import voxtrel"], env=environment, check=True)


def test_a_name_that_is_cut_within_a_character_is_told() -> None:
    def give(handle: int, index: int, out: Any) -> int:
        out._obj.name, out._obj.language, out._obj.number = b"Anna \xea\xb0", b"ko-KR", 1
        return 0

    assert _voice(give, 0, 0) == values.Voice("Anna \ufffd", "ko-KR", 1)


def test_numbers_without_a_name_are_kept() -> None:
    assert values.Status(-55) == -55
    assert values.Setting(4000) == 4000
    assert values.EventKind(99) not in list(values.EventKind)
    with pytest.raises(ValueError):
        values.Status("OK")  # type: ignore[arg-type]


def test_the_wheel_is_pure_and_typed(tmp_path: Path) -> None:
    shutil.copytree(ROOT / "python", tmp_path / "python")
    script = "from setuptools import build_meta; print(build_meta.build_wheel('.'))"
    command = [sys.executable, "-W", "ignore", "-c", script]
    subprocess.run(command, cwd=tmp_path / "python", check=True, capture_output=True)
    version = re.search(r"project\(.* VERSION ([0-9.]+)", (ROOT / "CMakeLists.txt").read_text())
    assert version is not None
    wheel = tmp_path / "python" / f"voxtrel-{version[1]}-py3-none-any.whl"
    names = zipfile.ZipFile(wheel).namelist()
    modules = {f"voxtrel/{path.name}" for path in (ROOT / "python/voxtrel").iterdir()}
    assert {name for name in names if "dist-info" not in name} == modules - {"voxtrel/__pycache__"}
    assert "voxtrel/py.typed" in names

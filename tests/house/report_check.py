#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""usage: report_check.py ROOT. Sees that the check of docs/performance.md notices what is wrong.

Works on a copy of what the check reads."""
import json
import pathlib
import shutil
import subprocess
import sys
import tempfile


def copy(root, to):
    for folder in ("docs", "scripts", "bench"):
        shutil.copytree(root / folder, to / folder)


def complaints(root):
    check = subprocess.run([sys.executable, "-B", root / "scripts" / "report.py", "check"],
                           capture_output=True, text=True)
    return check.returncode, check.stderr.strip()


def change(path, old, new):
    text = path.read_text()
    assert old in text, f"{path.name} has no {old!r}"
    path.write_text(text.replace(old, new, 1))


def edit_page(root):
    change(root / "docs/performance.md", "# Performance", "# Good performance")


def edit_plot(root):
    plot = min((root / "docs/performance").glob("*.svg"))
    plot.write_text(plot.read_text() + "<!-- -->")


def leave_plot(root):
    (root / "docs/performance/old.svg").write_text("<svg/>")


def edit_figure(root):
    kept = root / "docs/performance/report.json"
    report = json.loads(kept.read_text())
    lines = next(iter(report["runs"].values()))["lines"]
    lines[:] = [line.rsplit(" ", 1)[0] + " 77777" if line.startswith("figure") else line for line in lines]
    kept.write_text(json.dumps(report))


def print_another_kind_of_line(root):
    kept = root / "docs/performance/report.json"
    report = json.loads(kept.read_text())
    next(iter(report["runs"].values()))["lines"].append("wrote /home/somebody/file")
    kept.write_text(json.dumps(report))


def forget_definition(root):
    change(root / "docs/performance/figures.ini", "[say_over_plain]", "[other]")


def forget_reasons(root):
    table = root / "docs/performance/figures.ini"
    table.write_text(table.read_text().replace("\nwhy = ", "\nwhere = "))


def miss_further(root):
    kept = root / "docs/performance/report.json"
    report = json.loads(kept.read_text())
    lines = report["runs"]["scale_bench"]["lines"]
    name = "scale_set_told_1000_over_100"
    lines[:] = [f"figure {name} 77777" if f" {name} " in line else line for line in lines]
    kept.write_text(json.dumps(report))


def add_figure(root):
    change(root / "bench/ipc/ipc_bench.cpp", '"figure say_over_plain', '"figure brand_new')


FAULTS = [
    (edit_page, "performance.md is not what"),
    (edit_plot, ".svg is not what"),
    (leave_plot, "old.svg is not what"),
    (edit_figure, "performance.md is not what"),
    (print_another_kind_of_line, "a line of another kind"),
    (forget_definition, "does not define say_over_plain"),
    (forget_reasons, "does not say why the aim of "),
    (miss_further, "does not say why the aim of scale_set_told_1000_over_100 is missed so far"),
    (add_figure, "does not define brand_new"),
]


def main(root):
    with tempfile.TemporaryDirectory() as folder:
        sound = pathlib.Path(folder, "sound")
        copy(root, sound)
        status, said = complaints(sound)
        assert status == 0 and said == "", f"without a fault: {said}"
        for fault, words in FAULTS:
            broken = pathlib.Path(folder, fault.__name__)
            copy(root, broken)
            fault(broken)
            status, said = complaints(broken)
            assert status == 1 and words in said, f"{fault.__name__}: {status} {said!r}"


main(pathlib.Path(sys.argv[1]))

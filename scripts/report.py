#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""usage: report.py run BUILD_DIR [BENCH...]   run all benchmarks, or these, and render
       report.py render                     make page and plots of the kept output
       report.py check                      say what is not as render makes it; changes nothing

The kept output is docs/performance/report.json; what its figures are stands in
docs/performance/figures.ini. docs/performance.md and docs/performance/*.svg are made of both."""
import configparser
import datetime
import json
import os
import pathlib
import platform
import re
import subprocess
import sys
import time

import report_page

ROOT = pathlib.Path(__file__).resolve().parent.parent
FOLDER = ROOT / "docs" / "performance"
KEPT = FOLDER / "report.json"
PAGE = ROOT / "docs" / "performance.md"
LINE = re.compile(r"^(figure|point|distribution) \w+( -?[0-9.]+| nan)+$")


def benchmarks(table):
    return table["page"]["benchmarks"].split()


def read_table():
    table = configparser.ConfigParser(interpolation=None)
    table.optionxform = str
    table.read_string((FOLDER / "figures.ini").read_text())
    return table


def first_line(command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout.split("\n")[0]


def machine():
    """What it is that measures, without its name or whose it is."""
    cpu = re.search(r"^model name\s*: (.*)$", pathlib.Path("/proc/cpuinfo").read_text(), re.M)
    memory = os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES") / 2**30
    system = re.search(r'^PRETTY_NAME="(.*)"$', pathlib.Path("/etc/os-release").read_text(), re.M)
    return {
        "processor": cpu.group(1) if cpu else platform.machine(),
        "processors": str(os.cpu_count()),
        "memory": f"{memory:.0f} GiB",
        "kernel": platform.release().split("-")[0],
        "system": system.group(1) if system else "unknown",
        "compiler": first_line(["g++", "--version"]),
    }


def command_of(name, build):
    if name == "driver_bench":
        return [str(ROOT / "dev"), "bench", name]
    found = sorted(pathlib.Path(build, "bench").glob(f"*/{name}"))
    processor = str(min(os.sched_getaffinity(0)))
    return ["taskset", "-c", processor, str(found[0])] if found else None


def state_of_sources():
    """The commit that is measured, "+" behind it where the sources differ from it."""
    said = subprocess.run(["git", "-C", str(ROOT), "describe", "--always", "--abbrev=7", "--dirty=+",
                           "--exclude=*"], check=False, capture_output=True, text=True)
    return said.stdout.strip() or "unknown"


def await_quiet():
    """Until what went before, such as a build, weighs no more in the load average, or for 3 minutes."""
    limit = 0.25 * os.cpu_count()
    end = time.monotonic() + 180
    while os.getloadavg()[0] > limit and time.monotonic() < end:
        print(f"waiting for a quiet machine: load average {os.getloadavg()[0]:.2f}", flush=True)
        time.sleep(15)


def measure(name, command):
    """What one program prints for us; None when it failed. Shows all that it prints."""
    run = {
        "day": datetime.datetime.now(datetime.timezone.utc).strftime("%Y-%m-%d"),
        "commit": state_of_sources(),
        "load": f"{os.getloadavg()[0]:.2f}",
        "lines": [],
    }
    with subprocess.Popen(command, stdout=subprocess.PIPE, text=True, errors="replace") as program:
        for line in program.stdout:
            line = line.rstrip()
            if LINE.match(line):
                run["lines"].append(line)
            else:
                print(line, flush=True)
    if program.returncode != 0:
        print(f"report: {name} failed ({program.returncode})", file=sys.stderr)
        return None
    return run


def run(build, names):
    table = read_table()
    here = machine()
    kept = json.loads(KEPT.read_text()) if KEPT.exists() else {}
    runs = kept.get("runs", {}) if kept.get("machine") == here else {}
    failed = False
    chosen = names or benchmarks(table)
    unknown = [name for name in chosen if name not in benchmarks(table)]
    if unknown:
        print(f"report: there is no {' and no '.join(unknown)}", file=sys.stderr)
        return 2
    await_quiet()
    for number, name in enumerate(chosen, 1):
        print(f"\n== {name} ({number} of {len(chosen)})", flush=True)
        command = command_of(name, build)
        if command is None:
            print("report: it is not built here, and left out")
            runs.pop(name, None)
            continue
        result = measure(name, command)
        failed = failed or result is None
        if result is not None:
            runs[name] = result
    KEPT.write_text(json.dumps({"machine": here, "runs": runs}, indent=1) + "\n")
    render()
    return 1 if failed else 0


def made():
    """Path and text of every file that is made."""
    page, plots = report_page.render(read_table(), json.loads(KEPT.read_text()))
    files = {FOLDER / f"{name}.svg": text for name, text in plots.items()}
    files[PAGE] = page
    return files


def render():
    files = made()
    for old in FOLDER.glob("*.svg"):
        if old not in files:
            old.unlink()
    for path, text in files.items():
        path.write_text(text)
    print(f"made {PAGE.relative_to(ROOT)} and {len(files) - 1} plots")


def names_in_sources():
    """The beginnings of the names of figures that programs print."""
    pattern = re.compile(r'(?:figure\((?:std::string\()?"|"figure )(\w+)')
    for path in sorted((ROOT / "bench").rglob("*")):
        if path.suffix in (".cpp", ".py"):
            for name in pattern.findall(path.read_text()):
                yield path.name, name


def broken_lines(kept):
    for name, entry in kept["runs"].items():
        for line in entry["lines"]:
            if not LINE.match(line):
                yield f"{KEPT.name}: {name} has a line of another kind: {line[:60]}"
    if re.search(r"(^|\s)[~/]", " ".join(kept["machine"].values())):
        yield f"{KEPT.name}: the machine's description has a path"


def missing_definitions(table, kept):
    defined = [name for name in table.sections() if "of" in table[name]]
    for name, entry in kept["runs"].items():
        printed = [line.split()[1] for line in entry["lines"] if line.startswith("figure ")]
        for figure in printed:
            if figure not in defined:
                yield f"figures.ini does not define {figure}, which {name} prints"
        for figure in defined:
            if table[figure]["of"] == name and figure not in printed:
                yield f"figures.ini defines {figure}, which {name} did not print"
    for source, name in names_in_sources():
        if not any(known.startswith(name) for known in defined):
            yield f"figures.ini does not define {name}, which {source} prints"


def missing_reasons(table, kept):
    for entry in kept["runs"].values():
        for name, value in report_page.parse(entry["lines"])["figure"].items():
            if name not in table or not report_page.is_missed(value, table[name]):
                continue
            if "why" not in table[name] or not value <= float(table[name].get("most", "nan")):
                yield f"figures.ini does not say why the aim of {name} is missed so far"


def old_files():
    files = made()
    for path in sorted({*FOLDER.glob("*.svg"), *files}):
        if not path.exists() or path.read_text() != files.get(path):
            yield f"{path.relative_to(ROOT)} is not what ./dev report --render makes"


def complaints():
    kept = json.loads(KEPT.read_text())
    broken = list(broken_lines(kept))
    table = read_table()
    return broken or [*missing_definitions(table, kept), *missing_reasons(table, kept), *old_files()]


def main(arguments):
    if len(arguments) >= 2 and arguments[0] == "run":
        return run(arguments[1], arguments[2:])
    if arguments == ["render"]:
        render()
        return 0
    if arguments == ["check"]:
        found = complaints()
        for complaint in found:
            print(complaint, file=sys.stderr)
        return 1 if found else 0
    print(__doc__, file=sys.stderr)
    return 2


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))

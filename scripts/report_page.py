# SPDX-License-Identifier: Apache-2.0
"""The page about performance: tables of figures and the plots beside them."""
import report_plot

COLUMNS = "| Figure | Value | Aim | What it is | The least it could be |\n|---|---:|---:|---|---|"
MACHINE = ["processor", "processors", "memory", "kernel", "system", "compiler"]


def parse(lines):
    """The figures, curves and distributions of one program's output, by name."""
    output = {"figure": {}, "point": {}, "distribution": {}}
    for line in lines:
        kind, name, *numbers = line.split()
        values = [float(number) for number in numbers]
        if kind == "figure":
            output[kind][name] = values[0]
        elif kind == "point":
            output[kind].setdefault(name, []).append((values[0], values[1]))
        else:
            output[kind][name] = values
    return output


def shown(value, unit):
    digits = 0 if abs(value) >= 1000 else 1 if abs(value) >= 100 else 2
    return f"{value:.{digits}f}" + (f" {unit}" if unit else "")


def is_missed(value, entry):
    return "aim" in entry and not value <= float(entry["aim"])


def row(name, value, entry):
    aim = entry.get("aim", "")
    if aim:
        aim = f"≤ {aim}" + (", **missed**" if is_missed(value, entry) else "")
    cells = [f"`{name}`", shown(value, entry.get("unit", "")), aim, entry["what"], entry.get("limit", "")]
    return "| " + " | ".join(cells) + " |"


def plots_of(bench, table, output):
    """Name, title and SVG of each plot of a program whose output is there."""
    for section in table.sections():
        entry = table[section]
        if entry.get("plot") != bench:
            continue
        kind = entry["kind"]
        series = []
        for pair in entry["series"].strip().split("\n"):
            name, label = (part.strip() for part in pair.split("=", 1))
            if name in output[kind]:
                series.append((label, output[kind][name]))
        if series:
            draw = report_plot.growth if kind == "point" else report_plot.distribution
            yield section, entry["title"], draw(entry["title"], entry["x"], entry.get("y", ""), series)


def section(bench, table, run):
    output = parse(run["lines"])
    title = table["page"][bench]
    text = [f"## {title}", "",
            f"`./dev bench {bench}`, {run['day']}, at {run['commit']}; load average at its start: "
            f"{run['load']}."]
    rows = [row(name, output["figure"][name], table[name])
            for name in table.sections()
            if table[name].get("of") == bench and name in output["figure"]]
    if rows:
        text += ["", COLUMNS, *rows]
    reasons = [f"- `{name}`: {table[name]['why']}" for name in table.sections()
               if table[name].get("of") == bench and "why" in table[name]
               and is_missed(output["figure"].get(name, 0), table[name])]
    if reasons:
        text += ["", "Why aims are missed:", "", *reasons]
    plots = {}
    for name, caption, svg in plots_of(bench, table, output):
        plots[name] = svg
        text += ["", f"![{caption}](performance/{name}.svg)"]
    return "\n".join(text), plots


def render(table, kept):
    """The page, and the plots by name."""
    parts = ["# Performance", table["page"]["introduction"].strip()]
    parts.append("| Machine | |\n|---|---|\n" + "\n".join(
        f"| {key} | {kept['machine'][key]} |" for key in MACHINE))
    plots = {}
    missing = []
    for bench in table["page"]["benchmarks"].split():
        if bench not in kept["runs"]:
            missing.append(f"`{bench}`")
            continue
        text, more = section(bench, table, kept["runs"][bench])
        parts.append(text)
        plots.update(more)
    if missing:
        parts.append("Not measured in this report: " + ", ".join(missing) + ".")
    return "\n\n".join(parts) + "\n", plots

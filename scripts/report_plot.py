# SPDX-License-Identifier: Apache-2.0
"""Plots as SVG, readable on a light and on a dark page."""
import html
import math

WIDTH, HEIGHT = 720, 380
LEFT, RIGHT, TOP, BOTTOM = 70, 200, 40, 50
# Of medium lightness: the colours tell from each other and from both kinds of page.
STYLE = """<style>
text { font: 13px sans-serif; fill: #57606a; }
.title { font-size: 15px; font-weight: bold; }
.axis { stroke: #8b949e; fill: none; }
.grid { stroke: #8b949e; stroke-opacity: 0.3; fill: none; }
.line { fill: none; stroke-width: 2; }
.ideal { fill: none; stroke-width: 1.5; stroke-dasharray: 5 4; stroke-opacity: 0.8; }
@media (prefers-color-scheme: dark) { text { fill: #adbac7; } }
</style>"""
COLOURS = ["#2f81d7", "#d9730d", "#2da160", "#c2479f", "#8f7ee7", "#12a0b3"]


class Scale:
    """Values to places between `start` and `end`; logarithmic or linear."""

    def __init__(self, low, high, start, end, logarithmic):
        self.logarithmic = logarithmic
        self.low = math.floor(math.log10(low)) if logarithmic else low
        self.high = max(math.ceil(math.log10(high)), self.low + 1) if logarithmic else high
        self.start, self.end = start, end

    def place(self, value):
        value = math.log10(value) if self.logarithmic else value
        share = (value - self.low) / (self.high - self.low)
        return self.start + share * (self.end - self.start)

    def ticks(self):
        if self.logarithmic:
            return [10.0**power for power in range(self.low, self.high + 1)]
        return [self.low + (self.high - self.low) * n / 5 for n in range(6)]


def number(value):
    for unit, word in ((1e6, "M"), (1e3, "k")):
        if value >= unit:
            return f"{value / unit:g}{word}"
    return f"{value:g}"


def text(x, y, words, anchor="start", more=""):
    return f'<text x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}"{more}>{html.escape(words)}</text>'


def path(kind, points, colour):
    places = " ".join(f"{x:.1f},{y:.1f}" for x, y in points)
    return f'<polyline class="{kind}" stroke="{colour}" points="{places}"/>'


def axes(title, x_name, y_name, x, y):
    parts = [text(LEFT, 22, title, more=' class="title"')]
    for tick in x.ticks():
        at = x.place(tick)
        parts.append(f'<path class="grid" d="M{at:.1f} {TOP}V{HEIGHT - BOTTOM}"/>')
        parts.append(text(at, HEIGHT - BOTTOM + 18, number(tick), "middle"))
    for tick in y.ticks():
        at = y.place(tick)
        parts.append(f'<path class="grid" d="M{LEFT} {at:.1f}H{WIDTH - RIGHT}"/>')
        parts.append(text(LEFT - 8, at + 4, number(tick), "end"))
    parts.append(f'<path class="axis" d="M{LEFT} {TOP}V{HEIGHT - BOTTOM}H{WIDTH - RIGHT}"/>')
    parts.append(text((LEFT + WIDTH - RIGHT) / 2, HEIGHT - 12, x_name, "middle"))
    middle = (TOP + HEIGHT - BOTTOM) / 2
    parts.append(text(18, middle, y_name, "middle", f' transform="rotate(-90 18 {middle:.1f})"'))
    return parts


def legend(labels):
    parts = []
    for n, (label, kind) in enumerate(labels):
        y = TOP + 12 + 22 * n
        colour = COLOURS[n % len(COLOURS)] if kind == "line" else "#8b949e"
        parts.append(path(kind, [(WIDTH - RIGHT + 14, y), (WIDTH - RIGHT + 38, y)], colour))
        parts.append(text(WIDTH - RIGHT + 44, y + 4, label))
    return parts


def drawing(title, parts):
    return (f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {HEIGHT}" width="{WIDTH}"'
            f' height="{HEIGHT}" role="img" aria-label="{html.escape(title)}">\n{STYLE}\n'
            + "\n".join(parts) + "\n</svg>\n")


def growth(title, x_name, y_name, series):
    """How something grows: `series` of a label and points. Dashed: as much more as there is more."""
    points = [point for _, line in series for point in line]
    xs = [x for x, _ in points]
    ys = [y for _, y in points if y > 0]
    x = Scale(min(xs), max(xs), LEFT, WIDTH - RIGHT, True)
    y = Scale(min(ys), max(ys), HEIGHT - BOTTOM, TOP, True)
    parts = axes(title, x_name, y_name, x, y)
    for n, (_, line) in enumerate(series):
        colour = COLOURS[n % len(COLOURS)]
        (first_x, first_y), last_x = line[0], line[-1][0]
        reach = min(last_x, first_x * 10.0**y.high / first_y)
        ideal = [(first_x, first_y), (reach, first_y * reach / first_x)]
        parts.append(path("ideal", [(x.place(a), y.place(b)) for a, b in ideal], colour))
        places = [(x.place(a), y.place(b)) for a, b in line if b > 0]
        parts.append(path("line", places, colour))
        parts += [f'<circle cx="{a:.1f}" cy="{b:.1f}" r="3.5" fill="{colour}"/>' for a, b in places]
    labels = [(label, "line") for label, _ in series]
    return drawing(title, parts + legend([*labels, ("in proportion", "ideal")]))


def distribution(title, x_name, y_name, series):
    """Which share of the measurements took at most so long: `series` of a label and percentiles."""
    series = [(label, line[:100]) for label, line in series]  # the worst of all would hide the rest
    values = [value for _, line in series for value in line if value > 0]
    x = Scale(min(values), max(values), LEFT, WIDTH - RIGHT, True)
    y = Scale(0, 100, HEIGHT - BOTTOM, TOP, False)
    parts = axes(title, x_name, y_name or "% of all", x, y)
    for n, (_, line) in enumerate(series):
        places = [(x.place(value), y.place(percent)) for percent, value in enumerate(line) if value > 0]
        parts.append(path("line", places, COLOURS[n % len(COLOURS)]))
    return drawing(title, parts + legend([(label, "line") for label, _ in series]))

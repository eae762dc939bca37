#!/usr/bin/env python3
"""Judges the samples of a soak, and draws them as an SVG of two panels: memory, and handles with
threads.

usage: tools/plot_soak.py SAMPLES.csv PLOT.svg

The straight line that fits the last three quarters of the samples best may climb by no more than is
allowed, from its begin to its end; otherwise the exit code is 1. The drawing brings its own
background for light and for dark pages.
"""
import csv
import math
import pathlib
import sys
from xml.sax.saxutils import escape

WIDTH, PANEL, LEFT, RIGHT, TOP, GAP, BOTTOM = 860, 190, 76, 150, 64, 62, 56

# What the line may climb by: column, name, allowed.
FLAT = (("private_kib", "private KiB", 64), ("handles", "handles", 4), ("threads", "threads", 2),
        ("system_handles", "handles of all processes", 8))
# A restart loads two libraries and frees them. Wine's loader keeps some of its own memory for each,
# in a program that does nothing else as well; see docs/resilience.md.
LOADER_KIB_PER_RESTART = 0.125

STYLE = """
.page { fill: #ffffff } .frame { fill: none; stroke: #8c959f }
.grid { stroke: #d8dee4 } text { font: 13px sans-serif; fill: #1f2328 }
.title { font-size: 16px; font-weight: bold } .panel { font-weight: bold }
.axis { fill: #59636e; font-size: 12px }
.line { fill: none; stroke-width: 2; stroke-linejoin: round }
.c0 { stroke: #0969da } .c1 { stroke: #bc4c00 } .c2 { stroke: #1a7f37 }
.t0 { fill: #0969da } .t1 { fill: #bc4c00 } .t2 { fill: #1a7f37 }
@media (prefers-color-scheme: dark) {
  .page { fill: #0d1117 } .frame { stroke: #6e7681 } .grid { stroke: #2a3038 }
  text { fill: #e6edf3 } .axis { fill: #9198a1 }
  .c0 { stroke: #58a6ff } .c1 { stroke: #f0883e } .c2 { stroke: #3fb950 }
  .t0 { fill: #58a6ff } .t1 { fill: #f0883e } .t2 { fill: #3fb950 }
}
"""


def step_for(span: float, wanted: int) -> float:
    """A round distance of grid lines, so that about `wanted` of them fit."""
    raw = span / wanted
    power = 10 ** math.floor(math.log10(raw))
    return next(power * nice for nice in (1, 2, 5, 10) if power * nice >= raw)


def short(number: float) -> str:
    """1000000 as 1,000,000."""
    return f"{number:,.0f}"


def panel(top: float, title: str, unit: str, xs: list, lines: list, first_colour: int) -> list:
    """One panel; its vertical axis begins at 0, so that flat looks flat and growth does not."""
    inner = WIDTH - LEFT - RIGHT
    largest = max(max(values) for _, values in lines)
    y_step = step_for(largest, 4)
    y_end = y_step * math.ceil(largest * 1.08 / y_step)
    x_end = xs[-1]
    x_step = step_for(x_end, 5)

    def x_of(value: float) -> float:
        return LEFT + inner * value / x_end

    def y_of(value: float) -> float:
        return top + PANEL - PANEL * value / y_end

    out = [f'<text class="panel" x="{LEFT}" y="{top - 12}">{escape(title)}</text>']
    for i in range(round(y_end / y_step) + 1):
        y = y_of(i * y_step)
        out.append(f'<line class="grid" x1="{LEFT}" x2="{LEFT + inner}" y1="{y:.1f}" y2="{y:.1f}"/>')
        out.append(f'<text class="axis" x="{LEFT - 8}" y="{y + 4:.1f}" text-anchor="end">'
                   f'{short(i * y_step)}</text>')
    for i in range(math.floor(x_end / x_step + 1e-9) + 1):
        x = x_of(i * x_step)
        out.append(f'<line class="grid" x1="{x:.1f}" x2="{x:.1f}" y1="{top}" y2="{top + PANEL}"/>')
        anchor = "end" if x > LEFT + inner - 30 else "middle"
        out.append(f'<text class="axis" x="{x:.1f}" y="{top + PANEL + 18}" text-anchor="{anchor}">'
                   f'{short(i * x_step)}</text>')
    out.append(f'<rect class="frame" x="{LEFT}" y="{top}" width="{inner}" height="{PANEL}"/>')
    middle = top + PANEL / 2
    out.append(f'<text class="axis" transform="translate(18 {middle}) rotate(-90)" '
               f'text-anchor="middle">{escape(unit)}</text>')
    for colour, (name, values) in enumerate(lines, start=first_colour):
        points = " ".join(f"{x_of(x):.1f},{y_of(y):.1f}" for x, y in zip(xs, values))
        out.append(f'<polyline class="line c{colour}" points="{points}"/>')
        y = min(y_of(values[-1]), top + PANEL - 22)  # above the numbers of the axis
        out.append(f'<text class="t{colour}" x="{LEFT + inner + 8}" y="{y - 2:.1f}">'
                   f'{escape(name)}</text>')
        out.append(f'<text class="axis" x="{LEFT + inner + 8}" y="{y + 13:.1f}">'
                   f'{short(values[0])} to {short(values[-1])}</text>')
    return out


def draw(rows: list) -> str:
    def column(name: str) -> list:
        return [float(row[name]) for row in rows]

    requests = column("requests")
    minutes = column("seconds")[-1] / 60
    height = TOP + 2 * PANEL + GAP + BOTTOM
    second = TOP + PANEL + GAP
    out = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{height}" '
           f'viewBox="0 0 {WIDTH} {height}" role="img">',
           f"<title>Memory, handles and threads over {short(requests[-1])} requests</title>",
           f"<style>{STYLE}</style>",
           f'<rect class="page" width="{WIDTH}" height="{height}"/>',
           f'<text class="title" x="{LEFT}" y="26">The server over {short(requests[-1])} requests '
           f"({minutes:.0f} minutes)</text>"]
    out += panel(TOP, "Memory of its own", "KiB", requests, [("private", column("private_kib"))],
                 first_colour=0)
    out += panel(second, "What it holds", "number", requests,
                 [("handles", column("handles")), ("threads", column("threads"))], first_colour=1)
    out.append(f'<text class="axis" x="{LEFT + (WIDTH - LEFT - RIGHT) / 2}" y="{height - 14}" '
               'text-anchor="middle">requests</text>')
    out.append("</svg>")
    return "\n".join(out) + "\n"


def climb(xs: list, ys: list) -> float:
    """What the best straight line climbs by, from the first to the last of the samples."""
    x_mean, y_mean = sum(xs) / len(xs), sum(ys) / len(ys)
    squares = sum((x - x_mean) ** 2 for x in xs)
    products = sum((x - x_mean) * (y - y_mean) for x, y in zip(xs, ys))
    return products / squares * (xs[-1] - xs[0]) if squares else 0.0


def judge(rows: list) -> bool:
    late = rows[len(rows) // 4:]
    restarts = int(late[-1]["restarts"]) - int(late[0]["restarts"])
    flat = True
    for column, name, allowed in FLAT:
        if column == "private_kib":
            allowed += LOADER_KIB_PER_RESTART * restarts
        values = [float(row[column]) for row in late]
        climbed = climb([float(row["requests"]) for row in late], values)
        flat = flat and climbed <= allowed
        print(f"{name:24} {float(rows[0][column]):7.0f} first, {values[-1]:7.0f} last; the line "
              f"climbs by {climbed:.1f}, {allowed:.0f} allowed: "
              f"{'ok' if climbed <= allowed else 'FAILED'}")
    return flat


def main() -> int:
    if len(sys.argv) != 3:
        print(__doc__, file=sys.stderr)
        return 2
    with open(sys.argv[1], newline="") as file:
        rows = list(csv.DictReader(file))
    if not rows:
        print(f"plot_soak: no samples in {sys.argv[1]}", file=sys.stderr)
        return 1
    pathlib.Path(sys.argv[2]).write_text(draw(rows))
    return 0 if judge(rows) else 1


if __name__ == "__main__":
    sys.exit(main())

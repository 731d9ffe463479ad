#!/usr/bin/env python3
"""Draws an SVG chart of the cost of storing, sending and deleting by the number of rows."""

import argparse
import json
import math
from pathlib import Path

WIDTH, HEIGHT = 720, 440
LEFT, RIGHT, TOP, BOTTOM = 76, 124, 56, 56
# All colours are visible on white and on black. Each series has its own mark.
SERIES = {"store": "#2f81c7", "pass": "#c9601f", "delete": "#2f9e62"}
STYLE = """
  text { font: 13px sans-serif; fill: #59636e; }
  .title { font-size: 15px; font-weight: bold; }
  .grid { stroke: #8a9199; stroke-opacity: 0.3; }
  .axis { stroke: #737b84; }
  .linear { stroke: #8a9199; stroke-dasharray: 3 4; }
  @media (prefers-color-scheme: dark) { text { fill: #a5afba; } }
"""


def nice_steps(low, high):
    """The multiples (by 1, 2 and 5) of powers of ten that enclose the values."""
    steps = [base * 10.0**power for power in range(-3, 7) for base in (1, 2, 5)]
    first = max(index for index, step in enumerate(steps) if step <= low)
    last = min(index for index, step in enumerate(steps) if step >= high)
    return steps[first:last + 1]


class Axes:
    def __init__(self, rows, times):
        self.rows, self.steps = rows, nice_steps(min(times), max(times))

    @staticmethod
    def share(value, low, high):
        return math.log(value / low) / math.log(high / low)

    def x(self, count):
        return LEFT + self.share(count, self.rows[0], self.rows[-1]) * (WIDTH - LEFT - RIGHT)

    def y(self, time):
        return HEIGHT - BOTTOM - self.share(time, self.steps[0], self.steps[-1]) * (HEIGHT - TOP - BOTTOM)

    def line(self, kind, start, end):
        return f'<line class="{kind}" x1="{start[0]:.1f}" y1="{start[1]:.1f}" x2="{end[0]:.1f}" y2="{end[1]:.1f}"/>'

    def drawn(self):
        right, bottom = WIDTH - RIGHT, HEIGHT - BOTTOM
        for step in self.steps:
            y = self.y(step)
            yield self.line("grid", (LEFT, y), (right, y))
            label = f"{step / 1000:g} s" if step >= 1000 else f"{step:g} ms"
            yield f'<text x="{LEFT - 8}" y="{y + 4:.1f}" text-anchor="end">{label}</text>'
        for count in self.rows:
            x = self.x(count)
            yield self.line("grid", (x, TOP), (x, bottom))
            yield f'<text x="{x:.1f}" y="{bottom + 20}" text-anchor="middle">{count // 1000}</text>'
        yield self.line("axis", (LEFT, bottom), (right, bottom))
        yield self.line("axis", (LEFT, TOP), (LEFT, bottom))
        yield f'<text x="{(LEFT + right) / 2}" y="{HEIGHT - 14}" text-anchor="middle">thousand rows</text>'


def mark(work, x, y, colour):
    if work == "store":
        return f'<circle cx="{x:.1f}" cy="{y:.1f}" r="4.5" fill="{colour}"/>'
    if work == "pass":
        return f'<rect x="{x - 4:.1f}" y="{y - 4:.1f}" width="8" height="8" fill="{colour}"/>'
    return f'<path d="M{x:.1f} {y - 5.5:.1f} l5.5 9.5 h-11 z" fill="{colour}"/>'


def heights_apart(heights, distance=17):
    """Moves heights down where two labels would be too close."""
    placed, previous = {}, -math.inf
    for work in sorted(heights, key=heights.get):
        previous = placed[work] = max(heights[work], previous + distance)
    return placed


def picture(series, exponents):
    axes = Axes([count for count, _ in series["store"]], [time for points in series.values() for _, time in points])
    parts = [f'<text class="title" x="{LEFT}" y="26">Cost by number of rows</text>',
             f'<text x="{LEFT}" y="44">both axes logarithmic; dotted: linear growth from the first point</text>',
             *axes.drawn()]
    labels = heights_apart({work: axes.y(points[-1][1]) for work, points in series.items()})
    for work, points in series.items():
        colour = SERIES[work]
        (first_count, first_time), last_count = points[0], points[-1][0]
        linear = min(first_time * last_count / first_count, axes.steps[-1])
        parts.append(axes.line("linear", (axes.x(first_count), axes.y(first_time)),
                               (axes.x(linear / first_time * first_count), axes.y(linear))))
        path = " ".join(f"{axes.x(count):.1f},{axes.y(time):.1f}" for count, time in points)
        parts.append(f'<polyline points="{path}" fill="none" stroke="{colour}" stroke-width="2"/>')
        parts += [mark(work, axes.x(count), axes.y(time), colour) for count, time in points]
        parts.append(f'<text x="{WIDTH - RIGHT + 12}" y="{labels[work] + 4:.1f}" style="fill: {colour}">'
                     f"{work}, n^{exponents[work]:.2f}</text>")
    body = "\n".join(parts)
    return (f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {HEIGHT}" role="img" '
            f'aria-label="Cost of storing, sending and deleting by number of rows">\n<style>{STYLE}</style>\n'
            f"{body}\n</svg>\n")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("json", type=Path, metavar="JSON", help="the file that benchmarks/run --json wrote")
    parser.add_argument("svg", type=Path, metavar="OUT.svg")
    options = parser.parse_args()
    stages = json.loads(options.json.read_text())["stages"]
    growth = next((stage for stage in stages if stage["stage"] == "growth"), None)
    if growth is None:
        parser.error(f"{options.json} has no stage growth")
    options.svg.write_text(picture({work: growth["milliseconds"][work] for work in SERIES}, growth["parts"]))


if __name__ == "__main__":
    main()

"""Draws what sizes of installations cost: plot.py RESULTS.json OUTPUT.svg, both axes logarithmic."""

import json
import math
import sys

NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}
SERIES = (  # case, title, colour
    ("walk", "every attribute of every item", "#7a3b9a"),
    ("first", "the only session, opened and closed", "#b3541e"),
    ("later", "a session beside another", "#1f6f8b"),
    ("slots", "the list of all slots", "#3c7d3c"),
    ("chassis", "the last chassis, opened and closed", "#555555"),
)
WIDTH, HEIGHT = 860, 480
LEFT, RIGHT, TOP, BOTTOM = 80, 570, 54, 424
LARGEST = 255


def read(path):
    """Case to chassis to the best time in ns."""
    with open(path, encoding="utf-8") as file:
        runs = json.load(file)["benchmarks"]
    times = {}
    for run in runs:
        if run["run_type"] == "iteration":
            _, case, chassis = run["run_name"].split("/")[:3]
            time = run["cpu_time"] * NANOSECONDS[run["time_unit"]]
            sizes = times.setdefault(case, {})
            sizes[int(chassis)] = min(time, sizes.get(int(chassis), time))
    return times


def duration(nanoseconds):
    for unit, size in (("s", 1e9), ("ms", 1e6), ("µs", 1e3)):
        if nanoseconds >= size:
            return f"{nanoseconds / size:g} {unit}"
    return f"{nanoseconds:g} ns"


class Axes:
    def __init__(self, times):
        all_times = [time for sizes in times.values() for time in sizes.values()]
        self.lowest = math.floor(math.log10(min(all_times)))
        self.highest = math.ceil(math.log10(max(all_times)))

    def x(self, chassis):
        return LEFT + (RIGHT - LEFT) * math.log(chassis) / math.log(LARGEST)

    def y(self, time):
        part = (math.log10(time) - self.lowest) / (self.highest - self.lowest)
        return BOTTOM - (BOTTOM - TOP) * part

    def draw(self):
        for chassis in (1, 2, 4, 8, 16, 32, 64, 128, 255):
            x = self.x(chassis)
            yield f'<path class="grid" d="M{x:.1f} {TOP}V{BOTTOM}"/>'
            yield f'<text class="x" x="{x:.1f}" y="{BOTTOM + 18}">{chassis}</text>'
        yield f'<text class="x" x="{(LEFT + RIGHT) / 2:.1f}" y="{BOTTOM + 40}">chassis of 18 slots</text>'
        for power in range(self.lowest, self.highest + 1):
            y = self.y(10 ** power)
            yield f'<path class="grid" d="M{LEFT} {y:.1f}H{RIGHT}"/>'
            yield f'<text class="y" x="{LEFT - 8}" y="{y + 4:.1f}">{duration(10 ** power)}</text>'


def draw_series(axes, sizes, title, colour, label_y):
    points = [(axes.x(chassis), axes.y(time)) for chassis, time in sorted(sizes.items())]
    line = " ".join(f"{x:.1f},{y:.1f}" for x, y in points)
    yield f'<polyline fill="none" stroke="{colour}" stroke-width="2" points="{line}"/>'
    for x, y in points:
        yield f'<circle cx="{x:.1f}" cy="{y:.1f}" r="3" fill="{colour}"/>'
    last = points[-1]
    yield (f'<path stroke="{colour}" fill="none" d="M{last[0] + 5:.1f} {last[1]:.1f}'
           f'L{RIGHT + 18} {label_y:.1f}"/>')
    yield f'<text x="{RIGHT + 22}" y="{label_y + 4:.1f}" fill="{colour}">{title}</text>'


def label_places(ends):
    """From top to bottom, each at its line's end or as far below it as the ones above need."""
    places, least = {}, TOP
    for case, y in sorted(ends.items(), key=lambda end: end[1]):
        places[case] = max(y, least)
        least = places[case] + 18
    return places


def draw(times):
    axes = Axes(times)
    yield (f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {HEIGHT}" '
           f'font-family="sans-serif" font-size="13">')
    yield "<title>Costs against the size of the installation</title>"
    yield ("<style>.grid{stroke:#ddd}.x{text-anchor:middle}.y{text-anchor:end}"
           ".x,.y{fill:#333}</style>")
    yield f'<rect width="{WIDTH}" height="{HEIGHT}" fill="#fff"/>'
    yield (f'<text x="{LEFT}" y="28" font-size="16" fill="#111">'
           "Costs grow with the size of the answer</text>")
    yield from axes.draw()
    places = label_places({case: axes.y(times[case][LARGEST]) for case, _, _ in SERIES})
    for case, title, colour in SERIES:
        yield from draw_series(axes, times[case], title, colour, places[case])
    yield "</svg>"


def main():
    with open(sys.argv[2], "w", encoding="utf-8") as file:
        file.write("\n".join(draw(read(sys.argv[1]))) + "\n")


main()

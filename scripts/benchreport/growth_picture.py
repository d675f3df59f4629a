"""The growth curves of a run as SVG: one panel for each measure, time over n, both logarithmic, so that what is linear
rises like the dotted line."""

import math
from xml.sax.saxutils import escape

from figures import OURS, growth, undisturbed_times
from measures import MEASURES

COLUMNS = 3
PANEL = (316, 250)  # with its margins
PLOT = (58, 44, 226, 160)  # left, top, width, height within the panel
HEAD = 44

# Not every program that shows SVG knows variables in styles.
STYLE = """
text { font: 11px system-ui, "DejaVu Sans", sans-serif; fill: #59636e; }
.paper { fill: #ffffff; }
.title { font-size: 13px; font-weight: 600; fill: #1f2328; }
.grid { stroke: #d8dee4; stroke-width: 1; }
.linear { stroke: #59636e; stroke-width: 1.5; stroke-dasharray: 1.5 4; }
.curve { fill: none; stroke-width: 2; }
.ours { stroke: #0969da; }
.bare { stroke: #bc4c00; stroke-dasharray: 6 3; }
.dot { fill: #0969da; }
.bare-dot { fill: #bc4c00; }
@media (prefers-color-scheme: dark) {
  text { fill: #9198a1; }
  .paper { fill: #0d1117; }
  .title { fill: #e6edf3; }
  .grid { stroke: #30363d; }
  .linear { stroke: #9198a1; }
  .ours { stroke: #58a6ff; }
  .bare { stroke: #f0883e; }
  .dot { fill: #58a6ff; }
  .bare-dot { fill: #f0883e; }
}
"""


def decades(low, high):
    """The powers of ten around a range, at least one decade."""
    first, last = math.floor(math.log10(low)), math.ceil(math.log10(high))
    return first, max(last, first + 1)


def seconds(power):
    """A power of ten of seconds, in words."""
    unit = {0: "s", -1: "ms", -2: "µs", -3: "ns"}[min(power // 3, 0)]
    return f"{10 ** (power - 3 * min(power // 3, 0)):,} {unit}"


class Panel:
    def __init__(self, measure, figures):
        self.measure = measure
        self.sizes = [figure.size for figure in figures]
        self.contenders = [name for name in (OURS, measure.baseline) if name]
        # Those that the exponents are taken from.
        self.times = {name: undisturbed_times(figures, name) for name in self.contenders}
        self.growth = growth(figures)
        every = [time for times in self.times.values() for time in times]
        self.x_range = decades(min(self.sizes), max(self.sizes))
        self.y_range = decades(min(every), max(every))

    def x(self, size):
        return self.place(size, self.x_range, PLOT[0], PLOT[2])

    def y(self, time):
        return PLOT[1] * 2 + PLOT[3] - self.place(time, self.y_range, PLOT[1], PLOT[3])

    @staticmethod
    def place(value, powers, start, length):
        return start + length * (math.log10(value) - powers[0]) / (powers[1] - powers[0])

    def draw(self, left, top):
        yield f'<g transform="translate({left} {top})">'
        yield f'<text class="title" x="{PLOT[0]}" y="18">{escape(self.measure.title)}</text>'
        yield (f'<text x="{PLOT[0]}" y="34">ours: n<tspan dy="-4" font-size="9">{self.growth:.2f}</tspan>'
               f'<tspan dy="4">; baseline: {escape(self.measure.baseline)}</tspan></text>')
        yield from self.draw_grid()
        yield from self.draw_linear()
        for name in reversed(self.contenders):
            yield from self.draw_curve(name)
        yield "</g>"

    def draw_grid(self):
        left, top, width, height = PLOT
        for power in range(self.x_range[0], self.x_range[1] + 1):
            x = self.x(10 ** power)
            yield f'<line class="grid" x1="{x:.1f}" y1="{top}" x2="{x:.1f}" y2="{top + height}"/>'
            yield f'<text x="{x:.1f}" y="{top + height + 17}" text-anchor="middle">{10 ** power:,}</text>'
        for power in range(self.y_range[0], self.y_range[1] + 1):
            y = self.y(10.0 ** power)
            yield f'<line class="grid" x1="{left}" y1="{y:.1f}" x2="{left + width}" y2="{y:.1f}"/>'
            yield f'<text x="{left - 5}" y="{y + 4:.1f}" text-anchor="end">{seconds(power)}</text>'
        yield (f'<text x="{left + width / 2}" y="{top + height + 33}" text-anchor="middle">'
               f'{escape(self.measure.sizes)}</text>')

    def draw_linear(self):
        """What would be linear, from where ours begins to where the panel ends."""
        size, time = self.sizes[0], self.times[OURS][0]
        factor = min(self.sizes[-1] / size, 10.0 ** self.y_range[1] / time)
        yield (f'<line class="linear" x1="{self.x(size):.1f}" y1="{self.y(time):.1f}" '
               f'x2="{self.x(size * factor):.1f}" y2="{self.y(time * factor):.1f}"/>')

    def draw_curve(self, name):
        points = [(self.x(size), self.y(time)) for size, time in zip(self.sizes, self.times[name])]
        kind, dot = ("ours", "dot") if name == OURS else ("bare", "bare-dot")
        yield f'<polyline class="curve {kind}" points="{" ".join(f"{x:.1f},{y:.1f}" for x, y in points)}"/>'
        for x, y in points:
            yield f'<circle class="{dot}" cx="{x:.1f}" cy="{y:.1f}" r="3"/>'


def draw(run):
    """The picture of all measures that grow; None when the run has none."""
    panels = [Panel(measure, run.figures[measure.name]) for measure in MEASURES
              if measure.largest_growth and growth(run.figures.get(measure.name, [])) is not None]
    if not panels:
        return None
    rows = -(-len(panels) // COLUMNS)
    width, height = PANEL[0] * COLUMNS, HEAD + PANEL[1] * rows
    lines = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" width="{width}" '
             f'height="{height}" role="img">',
             "<title>Time over n, of the library and of its baselines</title>",
             f"<style>{STYLE}</style>",
             f'<rect class="paper" width="{width}" height="{height}"/>']
    lines += legend()
    for index, panel in enumerate(panels):
        lines += panel.draw(index % COLUMNS * PANEL[0], HEAD + index // COLUMNS * PANEL[1])
    lines.append("</svg>")
    return "\n".join(lines) + "\n"


def legend():
    yield '<line class="curve ours" x1="58" y1="22" x2="94" y2="22"/><circle class="dot" cx="76" cy="22" r="3"/>'
    yield '<text x="101" y="26">the library</text>'
    yield ('<line class="curve bare" x1="190" y1="22" x2="226" y2="22"/>'
           '<circle class="bare-dot" cx="208" cy="22" r="3"/>')
    yield '<text x="233" y="26">its baseline</text>'
    yield '<line class="linear" x1="330" y1="22" x2="366" y2="22"/>'
    yield '<text x="373" y="26">what would be linear</text>'
    yield '<text x="520" y="26">processor time of one run over n; both axes logarithmic</text>'

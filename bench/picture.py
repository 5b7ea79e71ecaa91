"""Charts as SVG text, drawn from plain data: the same data gives the same bytes."""

import math
from xml.sax.saxutils import escape

FONT = "font-family='DejaVu Sans, Verdana, sans-serif'"
OWN = "#c1440e"
OTHERS = ["#35618f", "#6f9bc4", "#8a8d91", "#5b8c5a", "#a88f4e", "#7d5a8c"]
WIDTH = 760


class Drawing:
    """Collects SVG elements. The colour of a series is chosen at its first use: `own` stands out."""

    def __init__(self, title, subtitle, own):
        self.elements = []
        self.own = own
        self.colours = {}
        self.text(20, 30, title, size=17, weight="bold")
        self.text(20, 50, subtitle, size=12, colour="#555555")

    def colour(self, series):
        if series not in self.colours:
            others = [name for name in self.colours if name != self.own]
            self.colours[series] = OWN if series == self.own else OTHERS[len(others) % len(OTHERS)]
        return self.colours[series]

    def text(self, x, y, text, size=12, anchor="start", colour="#222222", weight="normal"):
        self.elements.append(f"<text x='{x:.1f}' y='{y:.1f}' {FONT} font-size='{size}' fill='{colour}' "
                             f"text-anchor='{anchor}' font-weight='{weight}'>{escape(text)}</text>")

    def line(self, x1, y1, x2, y2, colour="#dddddd", width=1.0):
        self.elements.append(f"<line x1='{x1:.1f}' y1='{y1:.1f}' x2='{x2:.1f}' y2='{y2:.1f}' "
                             f"stroke='{colour}' stroke-width='{width}'/>")

    def bar(self, x, y, width, height, colour):
        self.elements.append(f"<rect x='{x:.1f}' y='{y:.1f}' width='{width:.1f}' "
                             f"height='{height:.1f}' fill='{colour}'/>")

    def polyline(self, points, colour):
        path = " ".join(f"{x:.1f},{y:.1f}" for x, y in points)
        self.elements.append(f"<polyline points='{path}' fill='none' stroke='{colour}' "
                             "stroke-width='2'/>")
        self.elements.extend(f"<circle cx='{x:.1f}' cy='{y:.1f}' r='3.5' fill='{colour}'/>"
                             for x, y in points)

    def svg(self, height):
        head = (f"<svg xmlns='http://www.w3.org/2000/svg' width='{WIDTH}' height='{height:.0f}' "
                f"viewBox='0 0 {WIDTH} {height:.0f}'>")
        ground = f"<rect width='{WIDTH}' height='{height:.0f}' fill='#ffffff'/>"
        return "\n".join([head, ground, *self.elements, "</svg>", ""])


def bars(title, subtitle, groups, own, mark=None, unit=""):
    """Horizontal bars. `groups` is [(heading, [(series, value), …]), …]; a value of None is left
    out. `own` is the series that stands out; `mark` draws a line at that value."""
    drawing = Drawing(title, subtitle, own)
    left, right, thickness = 170, WIDTH - 80, 15
    longest = max(value for _, rows in groups for _, value in rows if value is not None)
    scale = (right - left) / longest
    y = top = 70
    for heading, rows in groups:
        y += 18
        drawing.text(20, y, heading, size=13, weight="bold")
        y += 8
        for series, value in rows:
            if value is None:
                continue
            drawing.text(left - 8, y + 12, series, anchor="end")
            drawing.bar(left, y, value * scale, thickness, drawing.colour(series))
            drawing.text(left + value * scale + 6, y + 12, f"{value:.2f}{unit}", size=11)
            y += thickness + 4
        y += 6
    if mark is not None:
        drawing.line(left + mark * scale, top, left + mark * scale, y, colour="#222222", width=1.2)
    return drawing.svg(y + 14)


def lines(title, subtitle, series, own, x_label, y_label, y_range, log_x=False):
    """Lines over a common axis. `series` is [(name, [(x, y), …]), …]; `own` stands out."""
    drawing = Drawing(title, subtitle, own)
    left, right, top, bottom = 70, WIDTH - 190, 80, 380
    xs = sorted({x for _, points in series for x, _ in points})
    across = math.log10 if log_x else float

    def place(x, y):
        span = across(xs[-1]) - across(xs[0]) or 1.0
        low, high = y_range
        return (left + (across(x) - across(xs[0])) / span * (right - left),
                bottom - (y - low) / (high - low) * (bottom - top))

    steps = 6 if (y_range[1] - y_range[0]) % 6 == 0 else 5
    for step in range(steps + 1):
        value = y_range[0] + (y_range[1] - y_range[0]) * step / steps
        y = place(xs[0], value)[1]
        drawing.line(left, y, right, y)
        drawing.text(left - 8, y + 4, f"{value:g}", anchor="end", size=11)
    for x in xs:
        at = place(x, y_range[0])[0]
        drawing.line(at, bottom, at, bottom + 5, colour="#222222")
        drawing.text(at, bottom + 20, f"{x:,g}" if x >= 1 else f"{x:g}", anchor="middle", size=11)
    drawing.text((left + right) / 2, bottom + 42, x_label, anchor="middle")
    drawing.text(left - 50, top - 12, y_label)
    for row, (name, points) in enumerate(series):
        colour = drawing.colour(name)
        drawing.polyline([place(x, y) for x, y in points], colour)
        drawing.bar(right + 20, top + row * 22, 14, 14, colour)
        drawing.text(right + 40, top + row * 22 + 12, name)
    return drawing.svg(bottom + 60)

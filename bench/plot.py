"""Draws series over two logarithmic axes as one SVG, a panel beside the other."""

import dataclasses
import html
import math

WIDTH, HEIGHT = 330, 270  # of a panel
LEFT, RIGHT, TOP, BOTTOM = 62, 24, 44, 86
COLOURS = ["#1f6fb2", "#c2571a"]
FLOOR_COLOUR = "#7b8794"

STYLE = """
  text { font: 12px system-ui, sans-serif; fill: #1f2933 }
  .title { font-weight: 600; font-size: 13px }
  .tick { fill: #52606d; font-size: 11px }
  .grid { stroke: #d9dee4 } .axis { stroke: #52606d }
  path { fill: none; stroke-width: 2 }
  @media (prefers-color-scheme: dark) {
    text { fill: #e4e7eb } .tick { fill: #9aa5b1 } .grid { stroke: #323f4b } .axis { stroke: #9aa5b1 }
    svg { background: #12181f }
  }
"""


@dataclasses.dataclass
class Series:
    """Points (x, y), all above 0; a floor is dashed."""
    name: str
    points: list
    floor: bool = False


@dataclasses.dataclass
class Panel:
    title: str
    x_label: str
    y_label: str
    series: list


def decades(values):
    """The powers of ten around the values: the first exponent and the last."""
    low, high = math.floor(math.log10(min(values))), math.ceil(math.log10(max(values)) - 0.01)
    return low, max(high, low + 1)


def short(exponent):
    names = {0: "1", 1: "10", 2: "100", 3: "1 k", 4: "10 k", 5: "100 k",
             6: "1 M", 7: "10 M", 8: "100 M", 9: "1 G", 10: "10 G"}
    return names[exponent]


class Scale:
    """Maps a value to a coordinate: the first decade to `begin`, the last to `end`."""

    def __init__(self, values, begin, end):
        self.low, self.high = decades(values)
        self.begin, self.end = begin, end

    def __call__(self, value):
        return self.begin + (math.log10(value) - self.low) / (self.high - self.low) * (self.end - self.begin)

    def ticks(self):
        return [(self(10 ** exponent), short(exponent)) for exponent in range(self.low, self.high + 1)]


def draw_grid(panel, x, y):
    yield f'<text class="title" x="0" y="18">{html.escape(panel.title)}</text>'
    for at, label in x.ticks():
        yield f'<line class="grid" x1="{at:.1f}" y1="{y.begin}" x2="{at:.1f}" y2="{y.end}"/>'
        yield f'<text class="tick" x="{at:.1f}" y="{y.begin + 16}" text-anchor="middle">{label}</text>'
    for at, label in y.ticks():
        yield f'<line class="grid" x1="{x.begin}" y1="{at:.1f}" x2="{x.end}" y2="{at:.1f}"/>'
        yield f'<text class="tick" x="{x.begin - 6}" y="{at + 4:.1f}" text-anchor="end">{label}</text>'
    yield f'<text class="tick" x="{x.end}" y="{y.begin + 31}" text-anchor="end">{panel.x_label}</text>'
    yield f'<text class="tick" x="0" y="{TOP - 10}">{panel.y_label}</text>'


def draw_series(panel, x, y):
    for number, series in enumerate(panel.series):
        colour = FLOOR_COLOUR if series.floor else COLOURS[number]
        dashes = ' stroke-dasharray="5 4"' if series.floor else ""
        line = " ".join(f"{'ML'[index > 0]}{x(px):.1f} {y(py):.1f}" for index, (px, py) in enumerate(series.points))
        yield f'<path d="{line}" stroke="{colour}"{dashes}/>'
        for px, py in series.points:
            yield (f'<circle cx="{x(px):.1f}" cy="{y(py):.1f}" r="3" fill="{colour}">'
                   f"<title>{series.name}: {py:,} for {px:,}</title></circle>")
        legend = HEIGHT - BOTTOM + 46 + 16 * number
        yield f'<path d="M{LEFT} {legend - 4}h22" stroke="{colour}"{dashes}/>'
        yield f'<text x="{LEFT + 30}" y="{legend}">{html.escape(series.name)}</text>'


def draw(panels):
    """The SVG's text."""
    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH * len(panels)} {HEIGHT + 8}" '
             f'role="img" aria-label="How work and memory grow">', f"<style>{STYLE}</style>"]
    for number, panel in enumerate(panels):
        points = [point for series in panel.series for point in series.points]
        x = Scale([px for px, _ in points], LEFT, WIDTH - RIGHT)
        y = Scale([py for _, py in points], HEIGHT - BOTTOM, TOP)
        parts.append(f'<g transform="translate({number * WIDTH} 0)">')
        parts.extend(draw_grid(panel, x, y))
        parts.extend(draw_series(panel, x, y))
        parts.append("</g>")
    parts.append("</svg>\n")
    return "\n".join(parts)

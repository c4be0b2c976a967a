"""Charts of the benchmark report, as SVG.

They stand in an HTML page and take their colours from its style. Across, all is in per cent of the width, so that a
chart is as wide as there is room while its text keeps its size. Each chart has a title and a description, and the
numbers stand beside what is drawn.
"""

import math
import re

from bench_results import OURS, number

# Across, in per cent: where the bars or lines begin and end.
BARS = (42, 88)
LINES = (12, 93)
# Down, in pixels.
ROW, HEADING, SCALE = 20, 26, 40
LINES_TOP, LINES_BOTTOM, LINES_HEIGHT = 24, 150, 202

SHAPES = 4  # of the lines; the style has as many colours

# What no document of this kind may hold.
CONTROL = re.compile("[^\t\n\r\x20-\ud7ff\ue000-\ufffd\U00010000-\U0010ffff]")


def escape(text):
    """Any text, for a place between tags or in quotes."""
    text = CONTROL.sub("\ufffd", str(text))
    for character, name in (("&", "&amp;"), ("<", "&lt;"), (">", "&gt;"), ('"', "&quot;")):
        text = text.replace(character, name)
    return text


def scale(values):
    """The least and the greatest value of a logarithmic scale round 1, and the values to mark on it."""
    low, high = min([0.5, *values]), max([2, *values])
    steps = [step * 10.0**power for power in range(math.floor(math.log10(low)) - 1, math.ceil(math.log10(high)) + 1)
             for step in (1, 2, 5)]
    low = max(step for step in steps if step <= low)
    high = min(step for step in steps if step >= high)
    marks = [step for step in steps if low <= step <= high]
    if len(marks) > 7:
        room = math.log10(high / low) / 6
        powers = [mark for mark in marks if math.log10(mark).is_integer()]
        ends = [end for end in (low, high) if all(abs(math.log10(end / power)) > room for power in powers)]
        marks = sorted([*ends, *powers])
    return low, high, marks


def between(value, low, high, start, end):
    """Where a value stands on a logarithmic scale that is drawn from start to end."""
    return start + (end - start) * math.log(value / low) / math.log(high / low) if high > low else (start + end) / 2


def element(name, text=None, **attributes):
    """One element; an underscore in the name of an attribute stands for a hyphen, and one at its end for nothing."""
    written = "".join(f' {key.rstrip("_").replace("_", "-")}="{escape(value)}"' for key, value in attributes.items())
    return f"<{name}{written} />" if text is None else f"<{name}{written}>{escape(text)}</{name}>"


def across(value):
    return f"{value:.2f}%"


def chart(identity, height, title, description, parts):
    return "\n".join([
        f'<svg id="{identity}" role="img" width="100%" height="{height}"'
        f' aria-labelledby="{identity}-title {identity}-text">',
        element("title", title, id=f"{identity}-title"), element("desc", description, id=f"{identity}-text"),
        *parts, "</svg>"])


def ratio_chart(identity, title, comparisons):
    """A bar for each peer, to the right of 1 where ours is faster and to the left where the peer is."""
    compared = [comparison for comparison in comparisons if comparison.ratios]
    low, high, marks = scale([ratio for comparison in compared for ratio in comparison.ratios.values()])
    one = between(1, low, high, *BARS)
    height = SCALE + sum(HEADING + ROW * len(comparison.ratios) for comparison in compared) + 6
    parts = [element("text", "peer faster", x=across(one), y=12, dx=-8, class_="note", text_anchor="end"),
             element("text", "ours faster", x=across(one), y=12, dx=8, class_="note")]
    for mark in marks:
        x = across(between(mark, low, high, *BARS))
        parts += [element("line", x1=x, x2=x, y1=SCALE - 4, y2=height, class_="one" if mark == 1 else "grid"),
                  element("text", f"{mark:g}", x=x, y=SCALE - 10, class_="note", text_anchor="middle")]
    y = SCALE
    for comparison in compared:
        y += HEADING
        parts.append(element("text", f"{comparison.workload} / {comparison.document}", x=0, y=y - 7, class_="name"))
        for peer, ratio in comparison.ratios.items():
            parts += bar(peer, ratio, one, between(ratio, low, high, *BARS), y)
            y += ROW
    description = "; ".join(f"{comparison.workload} {comparison.document}: "
                            + ", ".join(f"{peer} {number(ratio)}" for peer, ratio in comparison.ratios.items())
                            for comparison in compared)
    return chart(identity, height, title, f"Time of each peer by ours. {description}.", parts)


def bar(peer, ratio, one, end, y):
    """The bar of a peer in the row that begins at y, with its name and its number."""
    is_faster = ratio >= 1
    return [element("text", peer, x=0, y=y + 12, dx=10),
            element("rect", x=across(min(one, end)), y=y + 1, width=across(abs(end - one)), height=14,
                    class_="faster" if is_faster else "slower"),
            element("text", number(ratio), x=across(end), y=y + 12, dx=5 if is_faster else -5,
                    text_anchor="start" if is_faster else "end", class_="number")]


def growth_chart(identity, workload, growths):
    """A line for ours and each peer, with as many points as there are sizes."""
    sizes = dict(sorted((size, label) for growth in growths for size, label, _ in growth.points))
    low, high, marks = scale([value for growth in growths for _, _, value in growth.points])

    def x_of(size):
        return between(size, min(sizes), max(sizes), *LINES)

    def y_of(value):
        return round(between(value, low, high, LINES_BOTTOM, LINES_TOP), 1)

    parts = []
    for mark in marks:
        parts += [element("line", x1=across(LINES[0] - 3), x2="100%", y1=y_of(mark), y2=y_of(mark),
                          class_="one" if mark == 1 else "grid"),
                  element("text", f"{mark:g}", x=across(LINES[0] - 5), y=y_of(mark) + 4, class_="note",
                          text_anchor="end")]
    named = apart(sizes, x_of, 11)
    for size in named:
        parts.append(element("text", sizes[size], x=across(x_of(size)), y=LINES_HEIGHT - 16, class_="note",
                             text_anchor="middle"))
    for index, growth in enumerate(growths):
        points = [(x_of(size), y_of(value)) for size, _, value in growth.points]
        parts += [element("line", x1=across(x1), y1=y1, x2=across(x2), y2=y2, class_=f"line line{index % SHAPES}")
                  for (x1, y1), (x2, y2) in zip(points, points[1:])]
        parts += [point(index, x, y) for x, y in points]
    for size in named:
        parts += labels(across(x_of(size)), sorted((value, y_of(value)) for growth in growths
                                                   for at, _, value in growth.points if at == size))
    description = "; ".join(f"{growth.implementation}: "
                            + ", ".join(f"{label} {number(value)}" for _, label, value in growth.points)
                            for growth in growths)
    return chart(identity, LINES_HEIGHT, f"{workload}: time for each unit of size",
                 f"Relative to the smallest size. {description}.", parts)


def apart(sizes, x_of, room):
    """Those of the sizes that have room for a text; the others are in the tables."""
    chosen = []
    for size in sizes:
        if not chosen or x_of(size) - x_of(chosen[-1]) >= room:
            chosen.append(size)
    return chosen


def labels(x, values):
    """The greatest of the values at one size above its point, and the least below."""
    (least, under), (most, over) = values[0], values[-1]
    parts = [element("text", number(most), x=x, y=over - 8, class_="number", text_anchor="middle")]
    if number(least) != number(most):
        parts.append(element("text", number(least), x=x, y=under + 18, class_="number", text_anchor="middle"))
    return parts


def point(index, x, y):
    """The mark of a line, which tells it from others without its colour."""
    if index % SHAPES == 0:
        return element("circle", cx=across(x), cy=y, r=4.5, class_="point0")
    # Moved by its own half, since a place in per cent cannot be reckoned with.
    turn = "rotate(45deg)" if index % SHAPES == 2 else "none"
    size = 6 if index % SHAPES == 3 else 8
    return (f'<svg x="{across(x)}" y="{y}" overflow="visible">'
            + element("rect", x=-size / 2, y=-size / 2, width=size, height=size, class_=f"point{index % SHAPES}",
                      style=f"transform: {turn}")
            + "</svg>")


def legend(growths):
    """What the lines of a chart of growth stand for, as pieces of HTML."""
    pieces = []
    for index, growth in enumerate(growths):
        mark = "\n".join([element("line", x1=0, x2=30, y1=7, y2=7, class_=f"line line{index % SHAPES}"),
                          point(index, 50, 7)])
        name = "ours" if growth.implementation == OURS else growth.implementation
        pieces.append(f'<span class="key"><svg width="30" height="14" aria-hidden="true">{mark}</svg>'
                      f"{escape(name)}</span>")
    return pieces

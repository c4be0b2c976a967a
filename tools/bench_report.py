#!/usr/bin/env python3
"""Writes the JSON results of Google Benchmark as one page of HTML that needs nothing else.

    bench_report.py PAGE RESULT.json...

bench_results.py tells of the names, bench_table.py prints the same numbers. What is wrong with the results stands on
the page as well, and makes the result of this program 1.
"""

import pathlib
import re
import sys

from bench_charts import escape, growth_chart, legend, ratio_chart
from bench_results import comparisons, growth_table, growths, ratio_table, read

STYLE = """
:root { color-scheme: light dark; --back: #fff; --text: #1b1b1b; --dim: #5c5c5c; --grid: #e2e2e2; --one: #6b6b6b;
  --blue: #0072b2; --orange: #d55e00; --green: #00795a; --purple: #a3508a; --panel: #f6f6f4; --link: #0b5a92; }
@media (prefers-color-scheme: dark) {
  :root { --back: #16181b; --text: #e6e6e3; --dim: #a7a7a2; --grid: #33373c; --one: #8d9197;
    --blue: #56b4e9; --orange: #f0913c; --green: #35c79a; --purple: #df9cc6; --panel: #1e2125; --link: #8cc8f2; }
}
* { box-sizing: border-box; }
body { margin: 0; background: var(--back); color: var(--text); font: 16px/1.5 system-ui, sans-serif; }
main { max-width: 76rem; margin: 0 auto; padding: 1rem; }
h1 { font-size: 1.7rem; line-height: 1.2; margin: .5rem 0 1rem; }
h2 { font-size: 1.35rem; line-height: 1.25; margin: 0 0 .25rem; }
h3 { font-size: 1rem; margin: 1.25rem 0 .25rem; }
p { max-width: 46rem; margin: .5rem 0; }
a { color: var(--link); }
section { border-top: 1px solid var(--grid); padding-top: 1.25rem; margin-top: 2rem; }
.charts { display: grid; gap: 0 2.5rem; }
#reading { margin-top: 1.5rem; }
@media (min-width: 60rem) { .charts.two { grid-template-columns: 1fr 1fr; } #reading { margin-top: 0; } }
.charts > div { min-width: 0; max-width: 46rem; }
.dim, figcaption { color: var(--dim); font-size: .875rem; }
figure { margin: 0 0 1rem; }
figcaption { color: var(--text); }
.key { margin-left: 1rem; white-space: nowrap; color: var(--dim); }
.key svg { vertical-align: -2px; margin-right: .35rem; }
svg { display: block; overflow: visible; }
.key svg { display: inline; }
svg text { fill: var(--text); font-size: 13px; }
svg .note { fill: var(--dim); font-size: 12px; }
svg .name { font-weight: 600; }
svg .number { font-variant-numeric: tabular-nums; }
svg .name, svg .number { paint-order: stroke; stroke: var(--back); stroke-width: 3px; }
.grid { stroke: var(--grid); }
.one { stroke: var(--one); stroke-width: 1.5; }
.faster { fill: var(--blue); }
.slower { fill: var(--orange); }
.line { stroke-width: 2; }
.line0 { stroke: var(--blue); }
.line1 { stroke: var(--orange); stroke-dasharray: 6 4; }
.line2 { stroke: var(--green); stroke-dasharray: 2 3; }
.line3 { stroke: var(--purple); stroke-dasharray: 10 3 2 3; }
.point0 { fill: var(--blue); }
.point1 { fill: var(--orange); }
.point2 { fill: var(--green); }
.point3 { fill: var(--purple); }
.scroll { overflow-x: auto; }
table { border-collapse: collapse; font-size: .875rem; margin: .25rem 0; font-variant-numeric: tabular-nums; }
th, td { padding: .2rem .75rem .2rem 0; text-align: left; border-bottom: 1px solid var(--grid); vertical-align: top; }
th { font-weight: 600; }
td.right, th.right { text-align: right; }
dl { display: grid; grid-template-columns: max-content 1fr; gap: .15rem 1rem; margin: .5rem 0; font-size: .9375rem; }
dt { color: var(--dim); }
dd { margin: 0; overflow-wrap: anywhere; }
.errors { border: 2px solid var(--orange); padding: .25rem 1rem; overflow-wrap: anywhere; }
summary { cursor: pointer; }
"""

READING = """
<div id="reading">
<h2>How to read this</h2>
<p>A bar is a peer's time by ours for the same work on the same data, on a logarithmic scale. To the right of 1, and
blue, ours is the faster one: 2 means that the peer takes twice as long. To the left of 1, and orange, the peer is:
0.5 means that it takes half as long. Of repeated runs the fastest counts, since whatever else a machine does only makes
a run slower.</p>
<p>A line tells how the cost grows: the time for each unit of size (a byte, an item), relative to that of the smallest
size. A level line is linear growth; where it rises, large inputs cost more than their share, and where it falls, a
fixed cost is spread over more. The lines tell nothing of who is faster.</p>
<p>Only ratios are shown, since times mean nothing on another machine. Ratios differ as well from one processor,
compiler and system to another, and small ones from run to run.</p>
</div>
"""


def distinct(values):
    """All different values in one text."""
    return "; ".join(dict.fromkeys(str(value) for value in values if value not in (None, "")))


def span(values):
    """The least and the greatest of them in one text."""
    values = sorted(values)
    return "" if not values else str(values[0]) if values[0] == values[-1] else f"{values[0]} to {values[-1]}"


def facts(programs):
    """What is told of the measurement: rows of a name and a text. The machine's name is not among them."""
    contexts = [program.context for program in programs]
    dates = [re.sub(r"T(\d\d:\d\d):\d\d", r" \1 ", str(context["date"]))
             for context in contexts if context.get("date")]
    loads = [context["load_avg"][0] for context in contexts if context.get("load_avg")]
    clock = distinct(f"{context['mhz_per_cpu']} MHz{', not fixed' if context.get('cpu_scaling_enabled') else ''}"
                     for context in contexts if context.get("mhz_per_cpu"))
    rows = [("Measured", span(dates)),
            ("Processor", distinct(context.get("processor") for context in contexts)),
            ("Processors", distinct(context.get("num_cpus") for context in contexts)),
            ("Clock", clock),
            ("Compiler", distinct(context.get("compiler") for context in contexts)),
            ("Repetitions", distinct(program.repetitions for program in programs)),
            ("Load when they began", span([round(load, 1) for load in loads]))]
    return [(name, text) for name, text in rows if text]


def html_table(caption, rows, left):
    """A table of rows of texts, the headings first; the first so many columns are flush left."""
    def cells(kind, row):
        return "".join(f'<{kind}{"" if i < left else " class=" + chr(34) + "right" + chr(34)}>{escape(cell)}</{kind}>'
                       for i, cell in enumerate(row))

    lines = [f"<h3>{escape(caption)}</h3>", '<div class="scroll" tabindex="0"><table>',
             f"<thead><tr>{cells('th', rows[0])}</tr></thead>", "<tbody>"]
    lines += [f"<tr>{cells('td', row)}</tr>" for row in rows[1:]]
    return [*lines, "</tbody></table></div>"]


def unbroken(points):
    """The points of a growth, each of which stays on its line."""
    return ", ".join(point.replace(" ", "\u00a0") for point in points.split("  "))


def growth_figures(program):
    """A chart for each workload that has at least two sizes."""
    by_workload = {}
    for growth in growths(program):
        if len(growth.points) > 1:
            by_workload.setdefault(growth.workload, []).append(growth)
    figures = []
    for index, (workload, lines) in enumerate(by_workload.items()):
        figures.append("\n".join([
            "<figure>", f"<figcaption><strong>{escape(workload)}</strong> {''.join(legend(lines))}</figcaption>",
            growth_chart(f"{identity(program)}-growth-{index}", workload, lines), "</figure>"]))
    return figures


def identity(program):
    """What the page calls a program in its links."""
    return "".join(c if c.isascii() and c.isalnum() else "-" for c in program.name)


def section(program):
    lines = [f'<section id="{identity(program)}">', f"<h2>{escape(program.title)}</h2>",
             f"<p>{escape(program.workloads)}</p>"]
    compared = comparisons(program)
    figures = growth_figures(program)
    has_bars = any(comparison.ratios for comparison in compared)
    lines.append(f'<div class="charts{" two" if has_bars and figures else ""}">')
    if has_bars:
        lines += ["<div><h3>Peers beside ours</h3>", '<p class="dim">The peer\'s time by ours.</p>',
                  ratio_chart(f"{identity(program)}-ratios", f"{program.title}: peers beside ours", compared), "</div>"]
    if figures:
        lines += ["<div><h3>Growth</h3>", '<p class="dim">Time for each unit of size.</p>', *figures, "</div>"]
    lines.append("</div>")
    ratios, growth = ratio_table(program), growth_table(program)
    if ratios:
        lines += html_table("The ratios as a table", ratios, 2)
    if growth:
        rows = [[*row[:-1], unbroken(row[-1])] for row in growth[1:]]
        lines += html_table("The growth as a table", [growth[0], *rows], 3)
    if program.peers:
        lines += ["<h3>The peers</h3>", "<dl>"]
        lines += [f"<dt>{escape(name)}</dt><dd>{escape(what)}</dd>" for name, what in sorted(program.peers.items())]
        lines.append("</dl>")
    return [*lines, "</section>"]


def overview(programs):
    """Links to the sections, with a count for each."""
    rows = []
    for program in programs:
        ratios = [ratio for comparison in comparisons(program) for ratio in comparison.ratios.values()]
        faster = sum(ratio >= 1 for ratio in ratios)
        rows.append(f'<tr><td><a href="#{identity(program)}">{escape(program.title)}</a></td>'
                    f'<td class="right">{len(ratios)}</td><td class="right">{faster}</td></tr>')
    return ['<div class="scroll" tabindex="0"><table>',
            '<thead><tr><th>Subsystem</th><th class="right">Comparisons</th><th class="right">Ours faster</th></tr>'
            "</thead>", "<tbody>", *rows, "</tbody></table></div>"]


def page(programs, errors):
    lines = ["<!DOCTYPE html>", '<html lang="en">', "<head>", '<meta charset="utf-8" />',
             '<meta name="viewport" content="width=device-width, initial-scale=1" />',
             "<title>VontalBase: what it costs, beside others</title>", f"<style>{STYLE}</style>", "</head>",
             "<body>", "<main>", "<h1>VontalBase: what it costs, beside others</h1>"]
    if errors:
        lines += ['<div class="errors"><h2>Not all of it could be used</h2>', "<ul>",
                  *(f"<li>{escape(error)}</li>" for error in errors), "</ul></div>"]
    lines += ['<div class="charts two">', "<div>", "<dl>",
              *(f"<dt>{escape(name)}</dt><dd>{escape(text)}</dd>" for name, text in facts(programs)), "</dl>",
              *overview(programs), "</div>", READING, "</div>"]
    for program in programs:
        lines += section(program)
    return "\n".join([*lines, "</main>", "</body>", "</html>", ""])


def main(arguments):
    if len(arguments) < 2:
        print(__doc__)
        return 2
    programs, errors = read(arguments[1:])
    pathlib.Path(arguments[0]).write_text(page(programs, errors), encoding="utf-8")
    print(f"the report is {arguments[0]}" + (f"; it tells of errors: {len(errors)}" if errors else ""))
    return 1 if errors else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))

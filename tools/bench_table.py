#!/usr/bin/env python3
"""Prints tables of the JSON results of Google Benchmark, two for each program; bench_results.py tells of the names.

    bench_table.py RESULT.json...

The first table sets "ours" beside each peer. A ratio is the peer's time by our time: above 1 we are the
faster one. Only ratios mean something on another machine, so only they are printed.

The second one shows how the time grows: the time for each unit of size, relative to the smallest size. A row of
ones is linear growth.
"""

import sys

from bench_results import growth_table, ratio_table, read


def table(rows, left):
    """Rows of texts as lines of columns, of which the first so many are flush left."""
    widths = [max(len(row[i]) for row in rows) for i in range(len(rows[0]))]
    lines = []
    for row in [rows[0], ["-" * width for width in widths], *rows[1:]]:
        cells = [cell.ljust(width) if i < left else cell.rjust(width)
                 for i, (cell, width) in enumerate(zip(row, widths))]
        lines.append("  ".join(cells).rstrip())
    return lines


def lines_of(program):
    """What is printed of one program."""
    lines = [program.title, program.workloads, ""]
    ratios, growth = ratio_table(program), growth_table(program)
    if ratios:
        lines += ["Time of each implementation by ours; above 1 ours is faster.", "", *table(ratios, 2), ""]
    if growth:
        lines += ["Time for each unit of size, relative to the smallest size; 1 throughout is linear.", "",
                  *table(growth, 3), ""]
    return lines


def main(paths):
    if not paths:
        print(__doc__)
        return 2
    programs, errors = read(paths)
    for program in programs:
        print("\n".join(lines_of(program)))
    for error in errors:
        print(f"error: {error}", file=sys.stderr)
    return 1 if errors else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))

#!/usr/bin/env python3
"""Makes one table of the JSON results of Google Benchmark.

    bench_table.py RESULT.json...

Names have the form workload/document/implementation, such as json_events/citm_catalog/ours. What Google
Benchmark appends to a name (threads, real time, repetitions) is ignored. Of repeated runs the fastest
counts, since whatever else a machine does only makes a run slower.

The first table sets "ours" beside each peer. A ratio is the peer's time by our time: above 1 we are the
faster one. Only ratios mean something on another machine, so only they are printed.

Rows of the form workload/growth:SIZE/implementation (1KiB, 16KiB, 1MiB, 500, 20k) make the second table:
the time for each unit of size, relative to the smallest size. A row of ones is linear growth.
"""

import json
import re
import sys

SUFFIX = re.compile(r"/(real_time|process_time|threads:\d+|repeats:\d+|iterations:\d+|min_time:[\d.]+"
                    r"|min_warmup_time:[\d.]+|manual_time)(?=/|$)")
SIZE = re.compile(r"growth:(\d+)(k|M|G|KiB|MiB|GiB|B)?\Z")
UNITS = {None: 1, "B": 1, "k": 10**3, "M": 10**6, "G": 10**9, "KiB": 2**10, "MiB": 2**20, "GiB": 2**30}
NANOSECONDS = {"ns": 1, "us": 10**3, "ms": 10**6, "s": 10**9}
OURS = "ours"


def read(paths):
    """Times in nanoseconds: {(workload, document): {implementation: time}}, in the order of the sources."""
    times, errors = {}, []
    for path in paths:
        with open(path, encoding="utf-8") as file:
            results = json.load(file)
        # They ran in a random order.
        for run in sorted(results["benchmarks"], key=lambda run: run.get("family_index", 0)):
            if run.get("run_type") == "aggregate":
                continue
            name = SUFFIX.sub("", run.get("run_name", run["name"]))
            parts = name.split("/")
            if len(parts) != 3:
                errors.append(f"{name}: not of the form workload/document/implementation")
                continue
            if run.get("error_occurred"):
                errors.append(f"{name}: {run.get('error_message', 'failed')}")
                continue
            workload, document, implementation = parts
            time = run["real_time"] * NANOSECONDS[run["time_unit"]]
            row = times.setdefault((workload, document), {})
            row[implementation] = min(time, row.get(implementation, time))
    return times, errors


def size_of(document):
    """The size in a growth row's name, or None for another row."""
    match = SIZE.match(document)
    return int(match.group(1)) * UNITS[match.group(2)] if match else None


def print_table(rows):
    """Rows of texts as columns; the first two are flush left."""
    widths = [max(len(row[i]) for row in rows) for i in range(len(rows[0]))]
    for number, row in enumerate(rows):
        cells = [cell.ljust(width) if i < 2 else cell.rjust(width)
                 for i, (cell, width) in enumerate(zip(row, widths))]
        print("  ".join(cells).rstrip())
        if number == 0:
            print("  ".join("-" * width for width in widths))


def ratio_rows(times, errors):
    peers = []
    for row in times.values():
        peers += [name for name in row if name != OURS and name not in peers]
    rows = [["workload", "document", OURS, *peers]]
    for (workload, document), row in times.items():
        if OURS not in row:
            errors.append(f"{workload}/{document}: there is no row of ours")
            continue
        rows.append([workload, document, "1.00",
                     *(f"{row[peer] / row[OURS]:.2f}" if peer in row else "-" for peer in peers)])
    return rows


def growth_rows(times):
    series = {}
    for (workload, document), row in times.items():
        size = size_of(document)
        if size is not None:
            for implementation, time in row.items():
                series.setdefault((workload, implementation), []).append((size, document[len("growth:"):], time))
    rows = [["workload", "implementation", "growth of the time for each unit"]]
    for (workload, implementation), points in series.items():
        points.sort()
        first = points[0][2] / points[0][0]
        rows.append([workload, implementation,
                     "  ".join(f"{label} {time / size / first:.2f}" for size, label, time in points)])
    return rows


def main():
    if len(sys.argv) < 2:
        print(__doc__)
        return 2
    times, errors = read(sys.argv[1:])
    ratios = ratio_rows(times, errors)
    if len(ratios) > 1:
        print("Time of each implementation by ours; above 1 ours is faster.\n")
        print_table(ratios)
    growth = growth_rows(times)
    if len(growth) > 1:
        print("\nTime for each unit of size, relative to the smallest size; 1 throughout is linear.\n")
        # The last column is a list and reads better flush left.
        widths = [max(len(row[i]) for row in growth) for i in range(2)]
        for row in growth:
            print(f"{row[0]:{widths[0]}}  {row[1]:{widths[1]}}  {row[2]}")
    for error in errors:
        print(f"error: {error}", file=sys.stderr)
    return 1 if errors else 0


if __name__ == "__main__":
    sys.exit(main())

"""Reads the JSON results of Google Benchmark; what the tables and the report share.

Names have the form workload/document/implementation, such as json_events/citm_catalog/ours. What Google
Benchmark appends to a name (threads, real time, repetitions) is ignored. Of repeated runs the fastest
counts, since whatever else a machine does only makes a run slower.

Names of the form workload/growth:SIZE/implementation (1KiB, 16KiB, 1MiB, 500, 20k) show how the time grows.
A document of the same workload and implementation whose name is a size, such as 100k, belongs to them.

A result file is that of one program, which tells of itself in the context of its results: see bench/about.h.
"""

import json
import math
import pathlib
import re
from dataclasses import dataclass, field

SUFFIX = re.compile(r"/(real_time|process_time|threads:\d+|repeats:\d+|iterations:\d+|min_time:[\d.]+"
                    r"|min_warmup_time:[\d.]+|manual_time)(?=/|$)")
SIZE = re.compile(r"(\d+)(k|M|G|KiB|MiB|GiB|B)?")
UNITS = {None: 1, "B": 1, "k": 10**3, "M": 10**6, "G": 10**9, "KiB": 2**10, "MiB": 2**20, "GiB": 2**30}
NANOSECONDS = {"ns": 1, "us": 10**3, "ms": 10**6, "s": 10**9}
GROWTH = "growth:"
PEER = "peer:"
OURS = "ours"


@dataclass
class Program:
    """What one program has measured."""

    name: str
    title: str
    workloads: str
    peers: dict  # what each peer is, by name
    context: dict  # as Google Benchmark writes it
    repetitions: int = 1
    times: dict = field(default_factory=dict)  # {(workload, document): {implementation: nanoseconds}}


@dataclass
class Comparison:
    """The peers' times by ours on one document."""

    workload: str
    document: str
    ratios: dict  # by peer


@dataclass
class Growth:
    """The times for each unit of size, relative to the smallest size."""

    workload: str
    implementation: str
    points: list  # of (size, label, relative time), by size


def read(paths):
    """The programs of the result files, and what is wrong with them."""
    programs, errors = [], []
    for path in paths:
        program = read_program(pathlib.Path(path), errors)
        if program:
            programs.append(program)
    return programs, errors


def read_program(path, errors):
    """One program, or None where the file holds nothing of use."""
    name = path.stem
    try:
        results = json.loads(path.read_text(encoding="utf-8"))
        context, runs = results["context"], results["benchmarks"]
    except (OSError, ValueError, KeyError, TypeError):
        errors.append(f"{name}: not a result of Google Benchmark")
        return None
    if not runs:
        errors.append(f"{name}: there is no result in it")
        return None
    for key in ("title", "workloads"):
        if not context.get(key):
            errors.append(f"{name}: the program does not tell its {key}")
    peers = {key[len(PEER):]: what for key, what in context.items() if key.startswith(PEER)}
    program = Program(name, context.get("title") or name, context.get("workloads") or "", peers, context)
    # They ran in a random order.
    for run in sorted(runs, key=lambda run: run.get("family_index", 0)):
        if run.get("run_type") == "aggregate":
            continue
        try:
            add_run(program, run, errors)
        except KeyError as missing:
            errors.append(f"{name}: a result without {missing}")
    check(program, errors)
    return program


def add_run(program, run, errors):
    name = SUFFIX.sub("", run.get("run_name", run["name"]))
    parts = name.split("/")
    if len(parts) != 3 or not all(parts):
        errors.append(f"{name}: not of the form workload/document/implementation")
        return
    if run.get("error_occurred"):
        errors.append(f"{name}: {run.get('error_message', 'failed')}")
        return
    workload, document, implementation = parts
    if document.startswith(GROWTH) and size_of(document[len(GROWTH):]) is None:
        errors.append(f"{name}: {document[len(GROWTH):]} is no size")
        return
    time = run["real_time"] * NANOSECONDS[run["time_unit"]]
    if not (time > 0 and math.isfinite(time)):
        errors.append(f"{name}: {run['real_time']} is no time")
        return
    row = program.times.setdefault((workload, document), {})
    row[implementation] = min(time, row.get(implementation, time))
    program.repetitions = max(program.repetitions, run.get("repetitions", 1))


def check(program, errors):
    for (workload, document), row in program.times.items():
        if OURS not in row:
            errors.append(f"{workload}/{document}: there is no row of ours")
    for peer in peers_of(program):
        if not program.peers.get(peer):
            errors.append(f"{program.name}: the program does not tell what {peer} is")


def size_of(text):
    """The number that a size such as 16KiB stands for, or None for another text and for nothing at all."""
    match = SIZE.fullmatch(text)
    return int(match.group(1)) * UNITS[match.group(2)] or None if match else None


def peers_of(program):
    """The names of the peers that have results, in the order of the sources."""
    return list(dict.fromkeys(name for row in program.times.values() for name in row if name != OURS))


def comparisons(program):
    """Ours beside the peers. What is measured for its growth alone, without a peer, is left out."""
    found = []
    for (workload, document), row in program.times.items():
        peers = [name for name in row if name != OURS]
        if OURS in row and (peers or not document.startswith(GROWTH)):
            found.append(Comparison(workload, document, {peer: row[peer] / row[OURS] for peer in peers}))
    return found


def growths(program):
    """One for each workload and implementation with a row of growth, in the order of the sources."""
    series = {}
    for (workload, document), row in program.times.items():
        if document.startswith(GROWTH):
            label = document[len(GROWTH):]
            for implementation, time in row.items():
                series.setdefault((workload, implementation), {})[size_of(label)] = (label, time)
    for (workload, document), row in program.times.items():
        for implementation, time in row.items():
            if size_of(document) and (workload, implementation) in series:
                series[workload, implementation].setdefault(size_of(document), (document, time))
    return [Growth(*names, relative_points(times)) for names, times in series.items()]


def relative_points(times):
    """The points of a growth out of {size: (label, time)}."""
    smallest = min(times)
    first = times[smallest][1] / smallest
    return [(size, label, time / size / first) for size, (label, time) in sorted(times.items())]


def number(value):
    """A ratio as it is shown."""
    return f"{value:.2f}"


def ratio_table(program):
    """Rows of texts with their headings in the first row, or no row at all."""
    peers = peers_of(program)
    rows = [[comparison.workload, comparison.document, number(1),
             *(number(comparison.ratios[peer]) if peer in comparison.ratios else "-" for peer in peers)]
            for comparison in comparisons(program)]
    return [["workload", "document", OURS, *peers], *rows] if rows else []


def growth_table(program):
    """Likewise."""
    rows = [[growth.workload, growth.implementation,
             "  ".join(f"{label} {number(value)}" for _, label, value in growth.points)]
            for growth in growths(program)]
    return [["workload", "implementation", "growth of the time for each unit"], *rows] if rows else []

#!/usr/bin/env python3
"""Tests of what tools/ makes of the results of the benchmarks."""

import contextlib
import io
import json
import math
import pathlib
import sys
import tempfile
import unittest
import xml.etree.ElementTree
from html.parser import HTMLParser

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "tools"))
sys.dont_write_bytecode = True

import bench_charts
import bench_report
import bench_results
import bench_table

CONTEXT = {"title": "Kettles", "workloads": "Water boiled.", "peer:pot": "Pot 1.2", "peer:pan": "Pan 3.4",
           "date": "2024-02-29T12:34:56+01:00", "host_name": "secret-machine", "num_cpus": 4, "mhz_per_cpu": 2500,
           "cpu_scaling_enabled": True, "load_avg": [0.25, 1.0, 2.0], "processor": "Abacus <9>", "compiler": "GCC 12"}


def run(name, time, **more):
    return {"name": name, "run_name": name, "run_type": "iteration", "real_time": time, "time_unit": "ns", **more}


def program(*runs, **context):
    return {"context": {**CONTEXT, **context}, "benchmarks": list(runs)}


# Ours takes 10 ms, then 8, then 9; the pot 20 ms, the pan 4.
KETTLES = program(
    run("boil/litre/ours/real_time", 10, time_unit="ms", family_index=0, repetitions=3),
    run("boil/litre/ours/real_time", 8, time_unit="ms", family_index=0, repetitions=3),
    run("boil/litre/ours/real_time", 9, time_unit="ms", family_index=0, repetitions=3),
    run("boil/litre/ours/real_time_mean", 9, time_unit="ms", family_index=0, run_type="aggregate"),
    run("boil/litre/pan/iterations:1/manual_time", 4_000_000, family_index=2),
    run("boil/litre/pot/threads:16", 20_000, time_unit="us", family_index=1),
    run("boil/growth:1KiB/ours", 1024, family_index=3),
    run("boil/growth:4KiB/ours", 6144, family_index=4),
    run("boil/1MiB/ours", 2097152, family_index=5),
    run("boil/1MiB/pot", 1048576, family_index=6),
    run("cool/cup/ours", 3, family_index=7))

KETTLE_TABLES = """\
Kettles
Water boiled.

Time of each implementation by ours; above 1 ours is faster.

workload  document  ours   pot   pan
--------  --------  ----  ----  ----
boil      litre     1.00  2.50  0.50
boil      1MiB      1.00  0.50     -
cool      cup       1.00     -     -

Time for each unit of size, relative to the smallest size; 1 throughout is linear.

workload  implementation  growth of the time for each unit
--------  --------------  --------------------------------
boil      ours            1KiB 1.00  4KiB 1.50  1MiB 2.00

"""

ODD = program(
    run("<w&>/\"d'\"/ours", 2), run("<w&>/\"d'\"/<peer>&", 1),
    run("a\u0001b/\u00e4/ours", 1), run("a\u0001b/\u00e4/pot", 1),
    run("g<>/growth:1k/ours", 1), run("g<>/growth:2k/ours", 1),
    title="</style><script>alert(1)</script>", workloads="a & b", **{"peer:<peer>&": "x < y & \"z\""})


class Page(HTMLParser):
    """What a browser would see: elements, their attributes and texts."""

    def __init__(self, text):
        super().__init__()
        self.elements, self.texts = [], []
        self.feed(text)
        self.close()

    def handle_starttag(self, tag, attrs):
        self.elements.append((tag, dict(attrs)))

    def handle_data(self, data):
        self.texts.append(data.strip())


class BenchTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def file(self, results, name="kettles_bench"):
        path = self.folder / f"{name}.json"
        path.write_text(results if isinstance(results, str) else json.dumps(results), encoding="utf-8")
        return str(path)

    def call(self, main, arguments):
        """The result, the output and the error output of one of the programs."""
        out, err = io.StringIO(), io.StringIO()
        with contextlib.redirect_stdout(out), contextlib.redirect_stderr(err):
            status = main(arguments)
        return status, out.getvalue(), err.getvalue()

    def page(self, *results):
        files = [self.file(each, f"program{i}_bench") for i, each in enumerate(results)]
        target = self.folder / "report.html"
        status, _, _ = self.call(bench_report.main, [str(target), *files])
        return status, target.read_text(encoding="utf-8")


class Tables(BenchTest):
    def test_the_fastest_run_counts_in_the_order_of_the_sources_and_growth_joins_documents_named_by_sizes(self):
        self.assertEqual(self.call(bench_table.main, [self.file(KETTLES)]), (0, KETTLE_TABLES, ""))

    def test_each_program_has_tables_of_its_own(self):
        other = program(run("fry/egg/ours", 2), run("fry/egg/pan", 3), title="Pans", workloads="Eggs.")
        expected = KETTLE_TABLES + """\
Pans
Eggs.

Time of each implementation by ours; above 1 ours is faster.

workload  document  ours   pan
--------  --------  ----  ----
fry       egg       1.00  1.50

"""
        files = [self.file(KETTLES), self.file(other, "pans_bench")]
        self.assertEqual(self.call(bench_table.main, files), (0, expected, ""))

    def test_of_two_rows_of_one_size_that_of_the_growth_counts(self):
        results = program(run("boil/growth:1k/ours", 1000), run("boil/growth:2k/ours", 4000), run("boil/2k/ours", 9000))
        _, out, _ = self.call(bench_table.main, [self.file(results)])
        self.assertIn("1k 1.00  2k 2.00\n", out)

    def test_a_peer_has_growth_only_where_it_has_a_row_of_growth(self):
        results = program(run("boil/growth:1k/ours", 1), run("boil/2k/ours", 1), run("boil/2k/pot", 1))
        _, out, _ = self.call(bench_table.main, [self.file(results)])
        self.assertEqual(out.count("boil      pot"), 0)

    def test_without_files_they_tell_how_they_are_used(self):
        for main, arguments in ((bench_table.main, []), (bench_report.main, ["report.html"])):
            status, out, _ = self.call(main, arguments)
            self.assertEqual(status, 2)
            self.assertIn("RESULT.json...", out)


class Errors(BenchTest):
    GOOD = run("boil/litre/ours", 1)

    def errors_of(self, results):
        status, out, err = self.call(bench_table.main, [self.file(results)])
        self.assertEqual(status, 1 if err else 0)
        return out, err

    def test_what_is_wrong_is_told_by_its_name(self):
        table = [
            ("two parts", run("boil/ours", 1), "boil/ours: not of the form workload/document/implementation"),
            ("four parts", run("a/b/c/ours", 1), "a/b/c/ours: not of the form workload/document/implementation"),
            ("an empty part", run("a//ours", 1), "a//ours: not of the form workload/document/implementation"),
            ("no ours", run("boil/cup/pot", 1), "boil/cup: there is no row of ours"),
            ("an unknown unit of size", run("boil/growth:12q/ours", 1), "boil/growth:12q/ours: 12q is no size"),
            ("no size at all", run("boil/growth:/ours", 1), "boil/growth:/ours:  is no size"),
            ("a size of nothing", run("boil/growth:0k/ours", 1), "boil/growth:0k/ours: 0k is no size"),
            ("a time of nothing", run("boil/cup/ours", 0), "boil/cup/ours: 0 is no time"),
            ("an endless time", run("boil/cup/ours", math.inf), "boil/cup/ours: inf is no time"),
            ("not a number", run("boil/cup/ours", math.nan), "boil/cup/ours: nan is no time"),
            ("a run that failed", run("boil/cup/ours", 0, error_occurred=True, error_message="no water"),
             "boil/cup/ours: no water"),
            ("a run without a time", {"name": "boil/cup/ours"}, "kettles_bench: a result without 'real_time'"),
        ]
        for label, bad, expected in table:
            with self.subTest(label):
                out, err = self.errors_of(program(self.GOOD, bad))
                self.assertEqual(err, f"error: {expected}\n")
                self.assertIn("boil      litre     1.00", out)

    def test_a_file_without_results_is_an_error(self):
        table = [
            ("no run", program(), "kettles_bench: there is no result in it"),
            ("an empty file", "", "kettles_bench: not a result of Google Benchmark"),
            ("half a file", '{"context": {', "kettles_bench: not a result of Google Benchmark"),
            ("something else", "[1]", "kettles_bench: not a result of Google Benchmark"),
        ]
        for label, results, expected in table:
            with self.subTest(label):
                self.assertEqual(self.errors_of(results), ("", f"error: {expected}\n"))

    def test_a_missing_file_is_an_error(self):
        missing = str(self.folder / "missing_bench.json")
        self.assertEqual(self.call(bench_table.main, [missing]),
                         (1, "", "error: missing_bench: not a result of Google Benchmark\n"))

    def test_a_program_has_to_tell_of_itself_and_of_its_peers(self):
        table = [
            ("no title", {"title": ""}, "kettles_bench: the program does not tell its title"),
            ("no workloads", {"workloads": ""}, "kettles_bench: the program does not tell its workloads"),
            ("an unknown peer", {"peer:pot": ""}, "kettles_bench: the program does not tell what pot is"),
        ]
        for label, context, expected in table:
            with self.subTest(label):
                _, err = self.errors_of(program(self.GOOD, run("boil/litre/pot", 1), **context))
                self.assertEqual(err, f"error: {expected}\n")

    def test_the_page_tells_of_errors_and_shows_the_rest(self):
        status, text = self.page(program(self.GOOD, run("boil/<cup>", 1), run("boil/litre/pot", 3)))
        self.assertEqual(status, 1)
        page = Page(text)
        self.assertIn("boil/<cup>: not of the form workload/document/implementation", page.texts)
        self.assertIn("3.00", page.texts)

    def test_a_page_of_nothing_but_errors_is_a_page(self):
        status, text = self.page("")
        self.assertEqual(status, 1)
        xml.etree.ElementTree.fromstring(text)
        self.assertIn("program0_bench: not a result of Google Benchmark", Page(text).texts)


class Report(BenchTest):
    def test_it_is_well_formed_and_each_name_in_it_is_unique(self):
        status, text = self.page(KETTLES, ODD)
        self.assertEqual(status, 0)
        xml.etree.ElementTree.fromstring(text)
        names = [attributes["id"] for _, attributes in Page(text).elements if "id" in attributes]
        self.assertEqual(len(names), len(set(names)))
        for _, attributes in Page(text).elements:
            for name in attributes.get("aria-labelledby", "").split():
                self.assertIn(name, names)
            if attributes.get("href"):
                self.assertIn(attributes["href"].removeprefix("#"), names)

    def test_it_fetches_nothing_and_runs_nothing(self):
        _, text = self.page(KETTLES, ODD)
        page = Page(text)
        self.assertFalse({"script", "link", "img", "iframe", "object"} & {tag for tag, _ in page.elements})
        for word in ("http:", "https:", "url(", "@import", "src="):
            self.assertNotIn(word, text)

    def test_each_workload_is_on_it_with_its_numbers(self):
        _, text = self.page(KETTLES)
        texts = Page(text).texts
        for wanted in ("boil / litre", "boil / 1MiB", "cool", "cup", "2.50", "0.50", "1.50", "2.00",
                       "1KiB\u00a01.00, 4KiB\u00a01.50, 1MiB\u00a02.00", "Kettles", "Water boiled.", "pot", "Pot 1.2"):
            self.assertIn(wanted, texts)

    def test_each_chart_has_a_title_and_a_description_with_the_numbers(self):
        _, text = self.page(KETTLES)
        texts = Page(text).texts
        self.assertEqual(sum(attributes.get("role") == "img" for _, attributes in Page(text).elements), 2)
        self.assertIn("Kettles: peers beside ours", texts)
        self.assertIn("Time of each peer by ours. boil litre: pot 2.50, pan 0.50; boil 1MiB: pot 0.50.", texts)
        self.assertIn("boil: time for each unit of size", texts)
        self.assertIn("Relative to the smallest size. ours: 1KiB 1.00, 4KiB 1.50, 1MiB 2.00.", texts)

    def test_bars_go_from_one_to_the_right_where_ours_is_faster_and_to_the_left_where_it_is_not(self):
        # The scale goes from 0.5 to 5, from 42 % to 88 %: 1 stands at 42 + 46 * log(2) / log(10) = 55.85 %.
        _, text = self.page(KETTLES)
        bars = [attributes for tag, attributes in Page(text).elements
                if tag == "rect" and attributes.get("class") in ("faster", "slower")]
        self.assertEqual([(bar["class"], bar["x"], bar["width"]) for bar in bars], [
            ("faster", "55.85%", "18.31%"), ("slower", "42.00%", "13.85%"), ("slower", "42.00%", "13.85%")])

    def test_the_overview_counts_the_comparisons_and_those_in_which_ours_is_faster(self):
        _, text = self.page(KETTLES)
        texts = [text for text in Page(text).texts if text]
        at = texts.index("Ours faster")
        self.assertEqual(texts[at + 1:at + 4], ["Kettles", "3", "1"])

    def test_it_tells_the_machine_but_not_its_name(self):
        _, text = self.page(KETTLES)
        texts = [text for text in Page(text).texts if text]
        for name, value in (("Measured", "2024-02-29 12:34 +01:00"), ("Processor", "Abacus <9>"), ("Processors", "4"),
                            ("Clock", "2500 MHz, not fixed"), ("Compiler", "GCC 12"), ("Repetitions", "3"),
                            ("Load when they began", "0.2")):
            self.assertEqual(texts[texts.index(name) + 1], value)
        self.assertNotIn("secret-machine", text)

    def test_odd_names_are_texts_and_nothing_else(self):
        status, text = self.page(ODD)
        self.assertEqual(status, 0)
        page = Page(text)
        self.assertNotIn("script", [tag for tag, _ in page.elements])
        for wanted in ("</style><script>alert(1)</script>", "<w&> / \"d'\"", "<peer>&", "x < y & \"z\"", "a & b",
                       "a\ufffdb / \u00e4", "g<>"):
            self.assertIn(wanted, page.texts)

    def test_lines_that_do_not_grow_and_one_size_alone_are_no_trouble(self):
        status, text = self.page(program(run("flat/growth:1/ours", 1), run("flat/growth:2/ours", 2),
                                         run("alone/growth:7/ours", 7)))
        self.assertEqual(status, 0)
        texts = Page(text).texts
        self.assertIn("1\u00a01.00, 2\u00a01.00", texts)
        self.assertIn("7\u00a01.00", texts)
        self.assertNotIn("alone: time for each unit of size", texts)


class Charts(unittest.TestCase):
    def test_a_scale_reaches_round_its_values_and_always_round_one(self):
        table = [
            ("nothing", [], (0.5, 2, [0.5, 1, 2])),
            ("near one", [0.9, 1.1], (0.5, 2, [0.5, 1, 2])),
            ("on a step", [5], (0.5, 5, [0.5, 1, 2, 5])),
            ("just above a step", [5.01], (0.5, 10, [0.5, 1, 2, 5, 10])),
            ("below", [0.15], (0.1, 2, [0.1, 0.2, 0.5, 1, 2])),
            ("wide", [0.3, 900], (0.2, 1000, [0.2, 1, 10, 100, 1000])),
            ("wide, with an end near a power of ten", [900], (0.5, 1000, [1, 10, 100, 1000])),
        ]
        for label, values, (low, high, marks) in table:
            with self.subTest(label):
                found = bench_charts.scale(values)
                self.assertAlmostEqual(found[0], low)
                self.assertAlmostEqual(found[1], high)
                self.assertEqual([f"{mark:g}" for mark in found[2]], [f"{mark:g}" for mark in marks])

    def test_sizes_without_room_for_their_text_have_none(self):
        self.assertEqual(bench_charts.apart([1, 5, 12, 30], lambda size: size, 11), [1, 12, 30])


class Sizes(unittest.TestCase):
    def test_a_size_is_a_whole_number_with_a_unit_or_none(self):
        table = {"500": 500, "7B": 7, "20k": 20_000, "3M": 3_000_000, "2G": 2_000_000_000, "4KiB": 4096,
                 "1MiB": 1048576, "1GiB": 1073741824, "0": None, "": None, "k": None, "1K": None, "1.5k": None,
                 "small_65k": None, "-1": None, "1k\n": None}
        for text, expected in table.items():
            with self.subTest(text):
                self.assertEqual(bench_results.size_of(text), expected)


if __name__ == "__main__":
    unittest.main()

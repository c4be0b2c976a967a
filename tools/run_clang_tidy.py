#!/usr/bin/env python3
"""Runs clang-tidy on the library, the examples and the programs of the manual, several files at once.

    run_clang_tidy.py --build BUILD_TREE [--clang-tidy PROGRAM]

A file that passed leaves a stamp in BUILD_TREE/lint. The stamp's name is made from everything that the
outcome depends on: the file, the headers of ours that it reaches, its compile command, the rules and the
version of clang-tidy.
"""

import argparse
import concurrent.futures
import hashlib
import json
import os
import pathlib
import re
import shlex
import subprocess
import sys

INCLUDE = re.compile(rb'^\s*#\s*include\s*"([^"]+)"', re.MULTILINE)

# Files are looked at as they are compiled for these targets; the first that knows a file decides. The
# library is looked at as the tests of internals have it, for that has the fault gates in it.
TARGETS = ("/VontalBaseTesting.dir/", "/VontalBase.dir/", "/example_", "/manual_")


def entries_to_check(build, root):
    """The compile commands to use, one for each file, by path."""
    database = json.loads((build / "compile_commands.json").read_text())
    chosen = {}
    for target in TARGETS:
        for entry in database:
            path = pathlib.Path(entry["directory"], entry["file"]).resolve()
            if target in entry["command"] and path.is_relative_to(root) and path not in chosen:
                # Warnings are the compiler's affair; clang has others under the same names. Nor does it know
                # every option.
                words = [word for word in shlex.split(entry["command"])
                         if not re.match(r"-W(?!l,|p,|a,)|-fno-gnu-unique$", word)]
                chosen[path] = {"directory": entry["directory"], "file": str(path), "arguments": words}
    return chosen


class Inputs:
    """Hashes of sources together with all headers of ours that they reach."""

    def __init__(self, root):
        self.root = root
        self.contents = {}

    def read(self, path):
        if path not in self.contents:
            text = path.read_bytes()
            includes = []
            for name in INCLUDE.findall(text):
                for folder in (self.root, path.parent):
                    candidate = folder / os.fsdecode(name)
                    if candidate.is_file():
                        includes.append(candidate)
                        break
            self.contents[path] = (hashlib.sha256(text).hexdigest(), includes)
        return self.contents[path]

    def closure(self, path):
        reached, waiting = set(), [path]
        while waiting:
            one = waiting.pop()
            if one not in reached:
                reached.add(one)
                waiting += self.read(one)[1]
        return sorted(self.read(one)[0] for one in reached)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--build", type=pathlib.Path, required=True)
    parser.add_argument("--clang-tidy", default="clang-tidy")
    arguments = parser.parse_args()

    root = pathlib.Path(__file__).resolve().parent.parent
    lint = arguments.build.resolve() / "lint"
    lint.mkdir(exist_ok=True)
    entries = entries_to_check(arguments.build.resolve(), root)
    (lint / "compile_commands.json").write_text(json.dumps(list(entries.values()), indent=1))

    version = subprocess.run([arguments.clang_tidy, "--version"], check=True, capture_output=True).stdout
    rules = hashlib.sha256(version + (root / ".clang-tidy").read_bytes()).hexdigest()
    inputs = Inputs(root)

    waiting, stamps = [], set()
    for path, entry in entries.items():
        key = "\n".join([rules, " ".join(entry["arguments"]), *inputs.closure(path)])
        stamp = lint / (hashlib.sha256(key.encode()).hexdigest() + ".passed")
        stamps.add(stamp)
        if not stamp.exists():
            waiting.append((path, stamp))
    for old in lint.glob("*.passed"):
        if old not in stamps:
            old.unlink()

    def check(job):
        path, stamp = job
        result = subprocess.run([arguments.clang_tidy, "--quiet", "-p", str(lint), str(path)],
                                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                text=True)
        if result.returncode == 0:
            stamp.touch()
        return path, result

    # The largest first, so that the last one to finish is a small one.
    waiting.sort(key=lambda job: -job[0].stat().st_size)
    failed = 0
    jobs = int(os.environ.get("CMAKE_BUILD_PARALLEL_LEVEL", len(os.sched_getaffinity(0))))
    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        for path, result in pool.map(check, waiting):
            if result.returncode != 0:
                failed += 1
                print(f"{path.relative_to(root)}:")
                # Counts of warnings in foreign headers say nothing.
                print(re.sub(r"(?m)^(\d+ warnings? (and \d+ errors? )?(generated|treated).*|Suppressed .*"
                             r"|Use -header-filter=.*)\n?", "", result.stdout))
    print(f"{len(waiting)} of {len(entries)} files were looked at, {failed} with complaints")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())

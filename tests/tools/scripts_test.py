#!/usr/bin/env python3
"""Tests of the scripts in tools/, with programs that stand for CMake and the others that they call."""

import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

TOOLS = pathlib.Path(__file__).resolve().parents[2] / "tools"

# Each notes how it was called. CMake cannot configure one preset, and cannot build another one.
STANDINS = {
    "cmake": 'case "$*" in "--preset linux-asan") echo "a broken file"; exit 1;; '
             '"--build --preset linux-tsan") exit 2;; esac',
    "ctest": "",
    # Everything is installed.
    "dpkg-query": 'shift 2; for package; do echo "installed $package"; done',
    "locale": "echo de_DE.utf8",
}


class Scripts(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name)
        (self.root / "tools").mkdir()
        (self.root / "programs").mkdir()
        for name in ("lib.sh", "test"):
            shutil.copy(TOOLS / name, self.root / "tools")
        for name, body in STANDINS.items():
            program = self.root / "programs" / name
            program.write_text(f'#!/bin/sh\necho {name} "$*" >>"{self.root}/calls"\n{body}\n', encoding="utf-8")
            program.chmod(0o755)

    def run_script(self, *command):
        # The outcome must not depend on what the caller's shell says.
        surroundings = {"PATH": f"{self.root / 'programs'}:{os.environ['PATH']}"}
        return subprocess.run(["bash", *command], cwd=self.root, env=surroundings,
                              stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False)

    def test_a_preset_that_does_not_build_does_not_keep_the_others_from_their_tests(self):
        result = self.run_script("tools/test", "--all")
        self.assertEqual(result.returncode, 1)
        self.assertIn("a broken file", result.stdout)
        summary = result.stdout.split("== summary\n")[1].splitlines()
        self.assertEqual([line.split(" (")[0] for line in summary],
                         ["linux-release: all tests passed", "linux-asan: does not build",
                          "linux-tsan: does not build", "windows-release: all tests passed"])
        tested = [line for line in (self.root / "calls").read_text().splitlines() if line.startswith("ctest")]
        self.assertEqual(tested, ["ctest --preset linux-release", "ctest --preset windows-release"])

    def test_other_scripts_stop_where_nothing_can_be_built(self):
        for preset in ("linux-asan", "linux-tsan"):
            with self.subTest(preset):
                result = self.run_script("-c", f"source tools/lib.sh; build {preset}; echo went on", "tools/demo")
                self.assertNotEqual(result.returncode, 0)
                self.assertNotIn("went on", result.stdout)


if __name__ == "__main__":
    unittest.main()

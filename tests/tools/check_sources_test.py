#!/usr/bin/env python3
"""Tests of the rules of the source tree: a small tree that keeps them all, and what is said of each that is broken."""

import pathlib
import subprocess
import sys
import tempfile
import unittest

CHECKER = pathlib.Path(__file__).resolve().parents[2] / "tools" / "check_sources.py"

PROGRAM = "#include \"VontalBase/VontalBase.h\"\nint main()\n{\n}\n"

GOOD_TREE = {
    "README.md": f"# Library\n\n```cpp\n{PROGRAM}```\n\nIt prints\n\n"
                 "```\n/home/you/application/main.cpp:2: nothing\n```\n",
    "VontalBase/VontalBase.h": '/// @file\n/// All of it.\n#include "VontalBase/text/text.h"\n',
    "VontalBase/export.h": "/// @file\n#ifdef _WIN32\n#endif\n",
    "VontalBase/text/text.h": '/// @file\n#include "VontalBase/export.h"\n#include "VontalBase/text/word.h"\n',
    "VontalBase/text/word.h": "/// @file\n/// A word.\n",
    "VontalBase/text/inner.h": "/// @internal\n/// @file\n",
    "VontalBase/text/text.cpp": '#include "VontalBase/text/inner.h"\n#include <semaphore>\n'
                                "void cut() { throw std::bad_alloc(); }\nvoid pass() { throw; }\n",
    "VontalBase/platform/posix/handle.h": "/// @file\n#include <unistd.h>\n",
    "VontalBase/platform/posix/files.cpp": "#include <fcntl.h>\n",
    "VontalBase/platform/windows/files.cpp": "#include <windows.h>\n",
    "VontalBase/platform/posix/xmltree.cpp": "",
    "docs/page.md": "\\include{lineno} first.cpp\n\n\\verbinclude first.txt\n\n\\include windows/first.cpp\n",
    "docs/programs/first.cpp": PROGRAM,
    "docs/programs/first.txt": "first.cpp:2: nothing\n",
    "docs/programs/windows/first.cpp": PROGRAM,
    "docs/programs/windows/first.txt": "first.cpp:2: nothing\n",
    "bench/text_bench.cpp": "bench::describe();\n",
    "examples/tour.cpp": "// " + 107 * "я" + "\n",
}

# What is written over the good tree, and what is then complained of. None takes a file away.
BROKEN = (
    ("a condition on the system", {"VontalBase/text/text.cpp": "\n#if defined(__linux__)\n#endif\n"},
     ["VontalBase/text/text.cpp:2: a condition on the operating system"]),
    ("another condition on the system", {"VontalBase/text/text.cpp": "# ifndef _WIN32\n# elif __MINGW32__\n"},
     ["VontalBase/text/text.cpp:1: a condition on the operating system",
      "VontalBase/text/text.cpp:2: a condition on the operating system"]),
    ("headers of the system", {"VontalBase/text/text.cpp": "#include <sys/stat.h>\n#include <Windows.h>\n"
                                                           "#include <semaphore.h>\n#include <libxml/tree.h>\n"},
     ["VontalBase/text/text.cpp:1: a header of the operating system, <sys/stat.h>",
      "VontalBase/text/text.cpp:2: a header of the operating system, <Windows.h>",
      "VontalBase/text/text.cpp:3: a header of the operating system, <semaphore.h>",
      "VontalBase/text/text.cpp:4: a header of the operating system, <libxml/tree.h>"]),
    ("a private header in a public one", {"VontalBase/text/word.h": '/// @file\n#include "VontalBase/text/inner.h"\n'},
     ["VontalBase/text/word.h:2: a public header includes a private one, VontalBase/text/inner.h"]),
    ("a header of a half in a public one",
     {"VontalBase/text/word.h": '/// @file\n#include "VontalBase/platform/posix/handle.h"\n'},
     ["VontalBase/text/word.h:2: a public header includes a private one, VontalBase/platform/posix/handle.h",
      "VontalBase/text/word.h:2: VontalBase/platform/posix/handle.h is for its own half of the platform"]),
    ("the header for applications", {"VontalBase/text/text.cpp": '#include "VontalBase/VontalBase.h"\n'},
     ["VontalBase/text/text.cpp:1: the header for applications is not for the library"]),
    ("a circle of headers", {"VontalBase/text/word.h": '/// @file\n#include "VontalBase/text/text.h"\n'},
     ["headers include each other in a circle: "
      "VontalBase/text/text.h -> VontalBase/text/word.h -> VontalBase/text/text.h"]),
    ("a source of one half alone", {"VontalBase/platform/pipes.h": "/// @internal\n/// @file\n",
                                    "VontalBase/platform/clock.h": "/// @internal\n/// @file\n",
                                    "VontalBase/platform/posix/pipes.cpp": "",
                                    "VontalBase/platform/windows/clock.cpp": ""},
     ["VontalBase/platform/windows/clock.cpp has no twin in posix/",
      "VontalBase/platform/posix/pipes.cpp has no twin in windows/"]),
    ("a header that does not say what it is", {"VontalBase/text/word.h": "// A word.\n"},
     ["VontalBase/text/word.h:1: the header does not say what it is, with /// @file"]),
    ("a header that says it too late", {"VontalBase/text/word.h": 5 * "\n" + "/// @file\n"},
     ["VontalBase/text/word.h:1: the header does not say what it is, with /// @file"]),
    ("a program that prints nobody knows what", {"docs/programs/second.cpp": PROGRAM},
     ["docs/programs/second.cpp has no second.txt beside it that tells what it prints"]),
    ("a program on no page", {"docs/programs/second.cpp": PROGRAM, "docs/programs/second.txt": "2\n"},
     ["docs/programs/second.cpp is on no page of the manual",
      "what docs/programs/second.cpp prints is on no page of the manual"]),
    ("a program that is only mentioned", {"docs/programs/second.cpp": PROGRAM, "docs/programs/second.txt": "2\n",
                                          "docs/other.md": "See \\include second.cpp\n\\verbinclude second.txt\n"},
     ["docs/programs/second.cpp is on no page of the manual"]),
    ("another first program than that of the manual", {"docs/programs/first.cpp": "int main()\n{\n}\n"},
     ["README.md does not have the whole of docs/programs/first.cpp"]),
    ("a first program that prints something else", {"docs/programs/first.txt": "first.cpp:3: nothing\n",
                                                    "docs/other.md": "\\verbinclude windows/first.txt\n"},
     ["README.md does not have what docs/programs/first.cpp prints as /home/you/application/main.cpp"]),
    ("an exception of one's own", {"VontalBase/text/text.cpp": "\n    throw 7;\n"},
     ["VontalBase/text/text.cpp:2: an exception that applications do not expect"]),
    ("an exception of the standard library that they do not expect either",
     {"VontalBase/text/text.cpp": 'int f(); /* a */ void cut(const char * = "/") { throw std::runtime_error(""); }\n'},
     ["VontalBase/text/text.cpp:1: an exception that applications do not expect"]),
    ("a failure record that is caught",
     {"VontalBase/text/text.cpp": "void f()\n{\n    try {} catch (const VontalException &) {}\n}\n"},
     ["VontalBase/text/text.cpp:3: an exception that applications do not expect"]),
    ("what is reserved", {"VontalBase/text/text.cpp":
                          'auto a = std::getenv("A"); // std::mutex\n/* CreateThread */ auto b = RegOpenKeyExW(0);\n'
                          "std::thread c;\nTerminateThread(d);\nstd::mutex e;\n[[gnu::hot]] int f;\n"
                          'auto g = "std::mutex"; auto h = qvplatform::joinThread(0);\n'},
     ["VontalBase/text/text.cpp:1: reading the environment belongs elsewhere or nowhere",
      "VontalBase/text/text.cpp:2: reading the registry belongs elsewhere or nowhere",
      "VontalBase/text/text.cpp:3: starting a thread belongs elsewhere or nowhere",
      "VontalBase/text/text.cpp:7: joining a thread belongs elsewhere or nowhere",
      "VontalBase/text/text.cpp:4: stopping a thread from outside belongs elsewhere or nowhere",
      "VontalBase/text/text.cpp:5: another lock than ThreadMutex belongs elsewhere or nowhere",
      "VontalBase/text/text.cpp:6: an extension of the compiler belongs elsewhere or nowhere"]),
    ("a native long", {"VontalBase/text/word.h": "/// @file\n/// So long.\nlong long a;\nunsigned long b;\n"},
     ["VontalBase/text/word.h:4: a native long in a public header"]),
    ("a half that is used from outside",
     {"VontalBase/text/text.cpp": '#include "VontalBase/platform/posix/handle.h"\n'},
     ["VontalBase/text/text.cpp:1: VontalBase/platform/posix/handle.h is for its own half of the platform"]),
    ("a benchmark that does not tell of itself", {"bench/zip_bench.cpp": "int main() {}\n"},
     ["bench/zip_bench.cpp does not call bench::describe"]),
    ("a public header that is forgotten", {"VontalBase/text/letter.h": "/// @file\n"},
     ["VontalBase/text/letter.h: VontalBase/VontalBase.h does not lead to it"]),
    ("a long line", {"examples/tour.cpp": "\n// " + 108 * "я" + "\n"},
     ["examples/tour.cpp:2: a line of 111 characters"]),
)


def complaints(tree):
    """What the checker says of a tree, and its exit code."""
    with tempfile.TemporaryDirectory() as folder:
        for name, text in tree.items():
            path = pathlib.Path(folder, name)
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text, encoding="utf-8")
        result = subprocess.run([sys.executable, str(CHECKER), folder], capture_output=True, encoding="utf-8",
                                check=False)
    if result.stderr:
        raise AssertionError(result.stderr)
    return result.stdout.splitlines(), result.returncode


class Rules(unittest.TestCase):
    def test_a_tree_that_keeps_them_all_is_praised(self):
        self.assertEqual(complaints(GOOD_TREE),
                         (["10 source files keep the rules of the tree (2 private headers)"], 0))

    def test_each_breach_is_told_with_its_place_and_nothing_else(self):
        for label, written, expected in BROKEN:
            with self.subTest(label):
                self.assertEqual(complaints({**GOOD_TREE, **written}), (expected, 1))

    def test_the_library_knows_its_system_in_the_platform_alone(self):
        known = {"VontalBase/platform/files.h": "/// @file\n/// @internal\n#ifdef __linux__\n#endif\n#include <fcntl.h>\n"}
        self.assertEqual(complaints({**GOOD_TREE, **known})[1], 0)


if __name__ == "__main__":
    unittest.main()

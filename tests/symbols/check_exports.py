#!/usr/bin/env python3
"""Holds what the shared library exports against what its headers declare: all of that, and nothing else.

    check_exports.py [--nm NM] [--filter CXXFILT] [--windows] HEADERS LIBRARY

HEADERS is the folder of the headers. LIBRARY is the shared library, or with --windows the import library of
the DLL. A class counts as exported where one of its members or its table of virtual operations is.
"""

import argparse
import re
import subprocess
import sys
from pathlib import Path

# What a compiler, a sanitizer or a counter puts there of its own.
FOREIGN = re.compile(r"([\w ]+ )?(std|__gnu_cxx|__cxxabiv1)::|mangle_path$|__odr_asan|__asan|__gcov")
# On Windows the compiler exports the type information of some classes that it makes no use of elsewhere.
FOREIGN_ON_WINDOWS = re.compile(r"typeinfo for ")

# Classes of which everything is in their headers, so that the library need not hold anything of them.
HEADERS_ALONE = {"qvdisk::FileEnumerator"}

# What may stand in front of the name of a class.
SPECIAL = re.compile(r"(vtable|VTT|typeinfo|typeinfo name|construction vtable|guard variable|covariant return thunk"
                     r"|(non-)?virtual thunk)( for| to) ")

COMMENT_OR_TEXT = re.compile(r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"', re.S)
DIRECTIVE = re.compile(r"^\s*#[^\n]*(?:\\\n[^\n]*)*", re.M)
TOKEN = re.compile(r"namespace\s+(?P<namespace>[\w:]+)\s*\{"
                   r"|\b(?:class|struct)\s+(?P<mark>VONTALBASE_API\s+)?(?P<name>[\w:]+)(?P<body>[^;{}()=]*\{)?"
                   r"|(?:friend\s+)?VONTALBASE_API|[{}]")


class Declared:
    """The names of exported classes, functions and objects, each with its namespaces."""

    def __init__(self):
        self.classes = set()
        self.others = set()

    def read(self, path):
        """Adds what a header declares."""
        text = DIRECTIVE.sub("", COMMENT_OR_TEXT.sub("", path.read_text(encoding="utf-8")))
        scopes = []
        for token in TOKEN.finditer(text):
            inner = "::".join([*(scope for scope in scopes if scope), token["namespace"] or token["name"] or ""])
            if token["mark"] and token["body"]:
                self.classes.add(inner)
            if token["namespace"] or token["body"]:
                scopes.append(token["namespace"] or token["name"])
            elif token.group() == "{":
                scopes.append(None)
            elif token.group() == "}":
                scopes.pop()
            elif token.group() == "VONTALBASE_API":
                declaration = re.match(r"[^;({=]*", text[token.end():]).group().strip()
                self.others.add(inner + re.search(r"(operator\s*[^\s\w]+|[\w:]+)\Z", declaration).group(1))


def exported_symbols(nm, windows, library):
    """The mangled names that the library offers."""
    options = ["--defined-only"] if windows else ["-D", "--defined-only"]
    listing = subprocess.run([nm, *options, library], check=True, capture_output=True, text=True).stdout
    names = [line.split()[-1].split("@")[0] for line in listing.splitlines() if len(line.split()) == 3]
    if windows:
        names = [name.removeprefix("__imp_") for name in names if name.startswith("__imp_")]
    return sorted(set(names))


def demangled(cxxfilt, names):
    """The names as they are written in sources, in the same order."""
    text = subprocess.run([cxxfilt], input="\n".join(names), check=True, capture_output=True, text=True).stdout
    return text.splitlines()


def owner_of(name, declared):
    """The declared class, function or object that an exported name belongs to; None for none."""
    plain = SPECIAL.sub("", name).replace("[abi:cxx11]", "")
    # A template tells its result in front of its name.
    plain = re.sub(r"\A(?:[\w:]+(?:<[^()]*>)?[ *&]+)(?=[\w:]+<[^()]*>\()", "", plain)
    if re.split(r"[(<]", plain)[0] in declared.others:
        return re.split(r"[(<]", plain)[0]
    operator = re.match(r"[\w:]*operator[^\w\s]+(?=\()", plain)
    if operator and operator.group() in declared.others:
        return operator.group()
    parts = re.split(r"[(<]", plain)[0].split("::")
    for count in range(len(parts), 0, -1):
        if "::".join(parts[:count]) in declared.classes:
            return "::".join(parts[:count])
    return None


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--nm", default="nm")
    parser.add_argument("--filter", default="c++filt")
    parser.add_argument("--windows", action="store_true")
    parser.add_argument("headers", type=Path)
    parser.add_argument("library")
    arguments = parser.parse_args()

    declared = Declared()
    for path in sorted(arguments.headers.rglob("*.h")):
        # The system has its own COM on Windows; the mark itself is a name to nobody.
        is_com = path.parent.name == "platform"
        if path.name != "export.h" and not (arguments.windows and is_com):
            declared.read(path)

    symbols = exported_symbols(arguments.nm, arguments.windows, arguments.library)
    found = set()
    strange = []
    for name in demangled(arguments.filter, symbols):
        owner = owner_of(name, declared)
        if owner:
            found.add(owner)
        elif not (FOREIGN.match(SPECIAL.sub("", name)) or (arguments.windows and FOREIGN_ON_WINDOWS.match(name))):
            strange.append(name)
    missing = sorted((declared.classes | declared.others) - found - HEADERS_ALONE)

    if not declared.classes or not declared.others:
        print("the headers declare nothing")
        return 1
    if strange:
        print("exported, but declared in no header:", *strange, sep="\n    ")
    if missing:
        print("declared, but not exported:", *missing, sep="\n    ")
    if strange or missing:
        return 1
    print(f"{len(declared.classes)} classes and {len(declared.others)} functions and objects, all of them exported, "
          f"by {len(symbols)} names")
    return 0


if __name__ == "__main__":
    sys.exit(main())

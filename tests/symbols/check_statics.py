#!/usr/bin/env python3
"""Checks that the static objects which no code uses are in the shared library all the same.

    check_statics.py [--nm NM] LIBRARY

They are local to one source file, so that only the table of all symbols shows them. Works on mangled names.
"""

import argparse
import re
import subprocess
import sys

# What must be there exactly once: a description, and the name of the object as g++ and clang mangle it.
OBJECTS = {
    "the object of the conversions": re.compile(r"_ZL11conversions\Z"),
    "the counter of the name FileCounter": re.compile(r"_ZN6qvbaseL11fileCounterE\Z"),
    "the date format": re.compile(r"_ZN6qvbase10dateFormatB5cxx11E\Z"),
    "the registry of COM objects": re.compile(r"_ZN6qvbase13debugRegistryB5cxx11E\Z"),
    "the lock of all counts": re.compile(r"_ZN6qvbaseL21referencedObjectMutexE\Z"),
    "the lock of multi-language strings": re.compile(r"_ZN6VontalL12mlLockObjectE\Z"),
    "the newest multi-language string": re.compile(r"_ZN6Vontal8newestMlE\Z"),
    "the default language": re.compile(r"_ZN6VontalL23mlDefaultLanguageObjectE\Z"),
    "the bundle without texts": re.compile(r"_ZN7qvutilsL25emptyResourceBundleObjectE\Z"),
    "the empty text": re.compile(r"_ZN7qvutilsL15emptyTextObjectE\Z"),
    "the bundle without languages": re.compile(r"_ZN7qvutilsL30emptyMultiLanguageBundleObjectE\Z"),
    "the resource manager": re.compile(r"_ZN7qvutilsL21resourceManagerObjectE\Z"),
    "the end of the resource manager": re.compile(r"_ZN7qvutilsL18resourceManagerEndE\Z"),
    "the logger of the system log": re.compile(r"_ZN7qvutilsL18systemLoggerObjectE\Z"),
    "the formatter of the system log": re.compile(r"_ZN7qvutilsL23systemLogFormaterObjectE\Z"),
    "the switch of the system log": re.compile(r"_ZN7qvutilsL15systemLogSwitchE\Z"),
    "the registry of threads": re.compile(r"_ZN6qvbaseL8registryE\Z"),
}


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--nm", default="nm")
    parser.add_argument("library")
    arguments = parser.parse_args()

    listing = subprocess.run([arguments.nm, "--defined-only", arguments.library],
                             check=True, capture_output=True, text=True).stdout
    # Data in any section, of this library alone or of the whole process.
    data = [fields[2] for fields in map(str.split, listing.splitlines()) if fields[1] in "bBdD"]
    failed = False
    for description, name in OBJECTS.items():
        count = sum(1 for symbol in data if name.match(symbol))
        if count != 1:
            print(f"{description}: {count} instead of 1")
            failed = True
    if failed:
        return 1
    print(f"{len(OBJECTS)} static objects, each of them once")
    return 0


if __name__ == "__main__":
    sys.exit(main())

#!/usr/bin/env python3
"""Checks the static objects of the shared library: each is there, and they are made in their order.

    check_statics.py [--nm NM] SOURCE LIBRARY

They are local to SOURCE, so that only the table of all symbols of LIBRARY shows them. Objects of one source
are made in the order of their definitions there, and destroyed in the opposite order. Works on mangled names.
"""

import argparse
import re
import subprocess
import sys

# In the order in which they are made: what the object is, its name, and its name as g++ and clang mangle it.
OBJECTS = (
    ("what keeps other libraries usable", "usableToTheEnd", r"_ZL14usableToTheEnd"),
    ("the registry of COM objects", "debugRegistryObject", r"_ZN6qvbaseL19debugRegistryObjectE"),
    ("the lock of all counts", "referencedObjectMutex", r"_ZN6qvbaseL21referencedObjectMutexE"),
    ("the lock of multi-language strings", "mlLockObject", r"_ZN6VontalL12mlLockObjectE"),
    ("the newest multi-language string", "newestMl", r"_ZN6Vontal8newestMlE"),
    ("the default language", "mlDefaultLanguageObject", r"_ZN6VontalL23mlDefaultLanguageObjectE"),
    ("the object of the conversions", "conversions", r"_ZL11conversions"),
    ("the date format", "dateFormatObject", r"_ZN6qvbaseL16dateFormatObjectE"),
    ("the counter of the name FileCounter", "fileCounter", r"_ZN6qvbaseL11fileCounterE"),
    ("the registry of threads", "registry", r"_ZN6qvbaseL8registryE"),
    ("the bundle without texts", "emptyResourceBundleObject", r"_ZN7qvutilsL25emptyResourceBundleObjectE"),
    ("the empty text", "emptyTextObject", r"_ZN7qvutilsL15emptyTextObjectE"),
    ("the bundle without languages", "emptyMultiLanguageBundleObject",
     r"_ZN7qvutilsL30emptyMultiLanguageBundleObjectE"),
    ("the resource manager", "resourceManagerObject", r"_ZN7qvutilsL21resourceManagerObjectE"),
    ("the end of the resource manager", "resourceManagerEnd", r"_ZN7qvutilsL18resourceManagerEndE"),
    ("the logger of the system log", "systemLoggerObject", r"_ZN7qvutilsL18systemLoggerObjectE"),
    ("the formatter of the system log", "systemLogFormaterObject", r"_ZN7qvutilsL23systemLogFormaterObjectE"),
    ("the switch of the system log", "systemLogSwitch", r"_ZN7qvutilsL15systemLogSwitchE"),
)


def count_faults(listing):
    """How many objects are not in the library exactly once."""
    # Data in any section, of this library alone or of the whole process.
    data = [fields[2] for fields in map(str.split, listing.splitlines()) if fields[1] in "bBdD"]
    faults = 0
    for description, _, mangled in OBJECTS:
        count = data.count(mangled)
        if count != 1:
            print(f"{description}: {count} instead of 1")
            faults += 1
    return faults


def order_faults(source):
    """How many objects are not defined behind the one before."""
    faults = 0
    last = -1
    for description, name, _ in OBJECTS:
        # A definition begins at the margin, or ends a structure there, and has a value or a semicolon.
        definition = re.search(rf"^(?:[\w:}}].*[ *&]|}} ){name}(?:\(|;| =)", source, re.M)
        position = definition.start() if definition else -1
        if position <= last:
            print(f"{description}: not defined behind the object before it")
            faults += 1
        last = max(last, position)
    return faults


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--nm", default="nm")
    parser.add_argument("source")
    parser.add_argument("library")
    arguments = parser.parse_args()

    listing = subprocess.run([arguments.nm, "--defined-only", arguments.library],
                             check=True, capture_output=True, text=True).stdout
    with open(arguments.source, encoding="utf-8") as file:
        source = file.read()
    if count_faults(listing) + order_faults(source):
        return 1
    print(f"{len(OBJECTS)} static objects, each of them once and in its place")
    return 0


if __name__ == "__main__":
    sys.exit(main())

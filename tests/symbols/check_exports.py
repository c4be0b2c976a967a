#!/usr/bin/env python3
"""Checks what the shared library exports: the documented namespaces and nothing else.

    check_exports.py [--nm NM] LIBRARY

Works on mangled names, so that return types and argument types do not matter.
"""

import argparse
import re
import subprocess
import sys

# First component of an exported name. Inner names are reached through these.
OURS = re.compile(r"(Vontal|VontalException\w*|qv\w*)\Z")

# The functions and the exception of COM, which the library offers where the system has none.
COM = re.compile(r"(SysAllocString|SysAllocStringLen|SysFreeString|SysStringLen|SysStringByteLen"
                 r"|CoTaskMem(Alloc|Realloc|Free)|Global(Alloc|Free|Lock|Unlock|Size)"
                 r"|CoInitialize|CoInitializeEx|CoUninitialize|CoCreateInstance"
                 r"|CreateStreamOnHGlobal|GetHGlobalFromStream"
                 r"|Variant(Init|Clear|Copy|ChangeType)|GetErrorInfo|SetErrorInfo|CreateErrorInfo"
                 r"|_com_error|_com_issue_error)\Z")

# The plain functions of zip archives, which are in no namespace.
ZIP = re.compile(r"(CreateZipZ|ZipAdd|ZipGetMemory|CloseZipZ|AddFolderContent|FormatZipMessageZ|IsZipHandleZ"
                 r"|OpenZipU|CloseZipU|FindZipItem[AW]|GetZipItem[AW]|UnzipItem|FormatZipMessageU"
                 r"|IsZipHandleU)\Z")

# Never exported, whatever they start with.
FORBIDDEN = re.compile(r"8platform")

# What stands in front of a name: virtual tables, type information, guards, thunks.
SPECIAL = re.compile(r"(TV|TT|TI|TS|TH|TW|GV|GR|Tc?h?n?\d*_(v?n?\d+_)?(n?\d+_)?|Tv\d*_n?\d+_)")


def first_component(symbol):
    """The first component of a mangled name: a word, "std" for the standard library, "" for C."""
    if not symbol.startswith("_Z"):
        return ""
    rest = symbol[2:]
    special = SPECIAL.match(rest)
    if special:
        rest = rest[special.end():]
    rest = re.sub(r"\AZ?N?[rVKRO]*", "", rest, count=1)
    if re.match(r"S[tabdios]", rest):
        return "std"
    length = re.match(r"\d+", rest)
    if not length:
        return rest
    start = length.end()
    return rest[start:start + int(length.group())]


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--nm", default="nm")
    parser.add_argument("library")
    arguments = parser.parse_args()

    listing = subprocess.run([arguments.nm, "-D", "--defined-only", arguments.library],
                             check=True, capture_output=True, text=True).stdout
    strange = []
    ours = 0
    for line in listing.splitlines():
        kind, symbol = line.split()[-2:]
        symbol = symbol.split("@")[0]
        component = first_component(symbol)
        if FORBIDDEN.search(symbol):
            strange.append(symbol)
        elif OURS.match(component) or COM.match(component) or ZIP.match(component):
            ours += 1
        elif component in ("std", "__gnu_cxx", "__cxxabiv1") and kind in "WVu":
            pass  # the compiler's copy of a template of the standard library
        elif symbol == "mangle_path" or symbol.startswith(("__odr_asan", "__asan", "__gcov")):
            pass  # a sanitizer's or counter's own
        else:
            strange.append(symbol)

    if ours == 0:
        print("the library exports nothing of its own")
        return 1
    if strange:
        print("exported, but not part of the documented interface:")
        names = subprocess.run(["c++filt"], input="\n".join(strange), check=True,
                               capture_output=True, text=True).stdout
        print(names)
        return 1
    print(f"{ours} exported symbols, all of them in documented namespaces")
    return 0


if __name__ == "__main__":
    sys.exit(main())

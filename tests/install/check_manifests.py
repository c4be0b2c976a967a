#!/usr/bin/env python3
"""Checks what the descriptions of our packages say: that they are well formed, and agree with the build.

    check_manifests.py ROOT

The version is that of CMakeLists.txt wherever it is told, and the port of vcpkg and the recipe of Conan require the
libraries that cmake/Settings.cmake looks for. README.md and the guide to installing name the packages that tools/lib.sh
builds with.
"""

import datetime
import email.utils
import json
import pathlib
import re
import sys

NAME = re.compile(r"[a-z0-9]+(-[a-z0-9]+)*")
PORT_KEYS = {"name", "version-semver", "description", "license", "supports", "dependencies"}
HOST_TOOLS = {"vcpkg-cmake", "vcpkg-cmake-config"}
CHANGELOG = re.compile(r"vontalbase \((\S+)\) unstable; urgency=(low|medium|high)\n\n"
                       r"(  \* \S.*\n(    \S.*\n)*)+\n"
                       r" -- [^<>]+ <[^<>@]+@[^<>@]+>  (.+)\n")


def only(matches, what):
    """The one match there is."""
    if len(matches) != 1:
        sys.exit(f"{what}: {len(matches)} in place of one")
    return matches[0]


def check_port(port, version, libraries):
    """What is wrong with the manifest of the vcpkg port."""
    manifest = json.loads((port / "vcpkg.json").read_text(encoding="utf-8"))
    if set(manifest) != PORT_KEYS:
        yield f"its keys should be {sorted(PORT_KEYS)}, but are {sorted(manifest)}"
        return
    if manifest["name"] != port.name or not NAME.fullmatch(manifest["name"]):
        yield f"the name is {manifest['name']!r}"
    if manifest["version-semver"] != version:
        yield f"the version is {manifest['version-semver']}, not {version}"
    for key in ("description", "license", "supports"):
        if not isinstance(manifest[key], str) or not manifest[key].strip():
            yield f"{key} is {manifest[key]!r}"
    needed = {"host": set(), "windows": set(), "others": set()}
    for entry in manifest["dependencies"]:
        entry = {"name": entry} if isinstance(entry, str) else entry
        if not set(entry) <= {"name", "host", "platform"} or not NAME.fullmatch(entry["name"]):
            yield f"a dependency is {entry}"
        if entry.get("host"):
            needed["host"].add(entry["name"])
            continue
        if entry.get("platform") not in (None, "!windows"):
            yield f"the platform of {entry['name']} is {entry['platform']!r}"
        needed["others"].add(entry["name"])
        if "platform" not in entry:
            needed["windows"].add(entry["name"])
    if needed != {"host": HOST_TOOLS, **libraries}:
        yield f"it needs {needed}, but the build {libraries}"
    for name in ("portfile.cmake", "usage"):
        if not (port / name).is_file():
            yield f"{name} is missing"


def check_recipe(text, version, libraries):
    """What is wrong with the Conan recipe, as text: it is run by another test."""
    told = only(re.findall(r'^    version = "(.*)"$', text, re.MULTILINE), "versions of the recipe")
    if told != version:
        yield f"the version is {told}, not {version}"
    needed = re.findall(r'self\.requires\("([a-z0-9]+)/\[[^]]+\]"\)', text)
    if set(needed) != libraries["others"]:
        yield f"it needs {sorted(needed)}, but the build {sorted(libraries['others'])}"


def check_changelog(text, version):
    """What is wrong with the changelog of the Debian packages."""
    match = CHANGELOG.match(text)
    if not match:
        yield "its first entry is not of the form that Debian wants"
        return
    if match.group(1) != version:
        yield f"its first entry is for {match.group(1)}, not for {version}"
    try:
        told = email.utils.parsedate_to_datetime(match.group(5))
        if email.utils.format_datetime(told) != match.group(5):
            yield f"the date {match.group(5)} should be {email.utils.format_datetime(told)}"
    except (TypeError, ValueError):
        yield f"{match.group(5)} is no date"


def check_page(text, version):
    """What is wrong with the versions that a page tells, which is README.md or one of the manual."""
    interface = ".".join(version.split(".")[:2])
    for told in set(re.findall(r"find_package\(VontalBase ([0-9.]+)", text)):
        if told != interface:
            yield f"find_package(VontalBase {told}), but the interface is {interface}"
    for told in set(re.findall(r"(?:at version |vontalbase[-/])(\d+\.\d+\.\d+)", text)):
        if told != version:
            yield f"the version is {told}, not {version}"


def check_needs(text, packages):
    """Which of the Debian packages a page does not name in the command that installs them."""
    commands = re.findall(r"^sudo apt install (.*)$", text, re.MULTILINE)
    missing = packages - {word for command in commands for word in command.split()}
    if missing:
        yield f"the packages {sorted(missing)} are not installed"


def check_changes(text, version):
    """What is wrong with CHANGELOG.md."""
    released = re.findall(r"^## \[(\d\S*)\] - (\S+)$", text, re.MULTILINE)
    if not released or released[0][0] != version:
        yield f"its latest version is not {version}"
    for _, date in released:
        try:
            datetime.date.fromisoformat(date)
        except ValueError:
            yield f"{date} is no date"


def main():
    root = pathlib.Path(sys.argv[1])

    def read(name):
        return (root / name).read_text(encoding="utf-8")

    version = only(re.findall(r"^    VERSION ([0-9.]+)$", read("CMakeLists.txt"), re.MULTILINE),
                   "versions in CMakeLists.txt")
    # What stands to the left is for all systems, what is indented is not for Windows.
    found = re.findall(r"^( *)find_package\((\w+)", read("cmake/Settings.cmake"), re.MULTILINE)
    libraries = {"windows": {name.lower() for indent, name in found if not indent and name != "Threads"},
                 "others": {name.lower() for _, name in found if name != "Threads"}}

    packages = set(only(re.findall(r"^packages_build=\((.*)\)$", read("tools/lib.sh"), re.MULTILINE),
                        "lists of packages in tools/lib.sh").split())
    checks = [
        ("packaging/vcpkg/ports/vontalbase", check_port(root / "packaging/vcpkg/ports/vontalbase", version, libraries)),
        ("packaging/conan/conanfile.py", check_recipe(read("packaging/conan/conanfile.py"), version, libraries)),
        ("packaging/debian/changelog", check_changelog(read("packaging/debian/changelog"), version)),
        ("CHANGELOG.md", check_changes(read("CHANGELOG.md"), version)),
    ]
    for name in ["README.md", *sorted(f"docs/{page.name}" for page in (root / "docs").glob("*.md"))]:
        checks.append((name, check_page(read(name), version)))
    for name in ("README.md", "docs/installing.md"):
        checks.append((name, check_needs(read(name), packages)))
    complaints = [f"{place}: {complaint}" for place, found in checks for complaint in found]

    for complaint in complaints:
        print(complaint)
    if not complaints:
        print(f"all packages are of version {version} and need {sorted(libraries['others'])}")
    return 1 if complaints else 0


sys.exit(main())

#!/usr/bin/env python3
"""Runs the Conan recipe, and then that of its test package, step by step as Conan would.

In place of Conan stands the package in standin/; see there. The objects of the finished build tree are taken where
the recipe would compile the same ones again.
"""

import argparse
import importlib.util
import os
import pathlib
import shutil
import subprocess
import sys

HERE = pathlib.Path(__file__).resolve().parent
sys.dont_write_bytecode = True
sys.path.insert(0, str(HERE / "standin"))

from conan import ConanFile  # noqa: E402
from conan.errors import ConanInvalidConfiguration  # noqa: E402
from conan.tools.cmake import CMakeDeps, CMakeToolchain  # noqa: E402


class Setting(str):
    """A setting with others below it, such as compiler.cppstd."""


def make_settings(windows, **changed):
    compiler = Setting(changed.pop("compiler", "gcc"))
    compiler.version = "12"
    compiler.cppstd = changed.pop("cppstd", "20")
    return {"os": "Windows" if windows else "Linux", "arch": "x86_64", "build_type": "Release",
            "compiler": compiler, **changed}


class Machine:
    """How programs are built and started here."""

    def __init__(self, arguments):
        self.arguments = arguments
        self.libraries = []
        self.cmake_values = {
            "CMAKE_CXX_COMPILER": arguments.cxx,
            "CMAKE_CXX_COMPILER_LAUNCHER": str(HERE.parent / "reuse-object"),
            "CMAKE_EXPORT_COMPILE_COMMANDS": "ON",
        }
        if arguments.toolchain:
            self.cmake_values["CMAKE_TOOLCHAIN_FILE"] = arguments.toolchain

    def configured(self, conanfile):
        """Called where a tree is configured and not yet built."""
        if conanfile.name:
            self.reuse_objects(conanfile)

    def reuse_objects(self, conanfile):
        print(subprocess.run(
            [sys.executable, str(HERE.parent / "reuse_objects.py"), self.arguments.build, self.arguments.source,
             conanfile.build_folder, conanfile.source_folder],
            check=True, stdout=subprocess.PIPE, text=True).stdout.strip())

    def start(self, command, folder):
        environment = dict(os.environ)
        if self.arguments.emulator:
            command += ".exe"
            environment["WINEPATH"] = ";".join("Z:" + place for place in self.libraries)
        else:
            environment["LD_LIBRARY_PATH"] = ":".join(self.libraries)
        emulator = self.arguments.emulator.split(";") if self.arguments.emulator else []
        result = subprocess.run([*emulator, command], cwd=folder, env=environment, check=True,
                                stdout=subprocess.PIPE, text=True)
        print(f"{command} prints: {result.stdout.strip()}")


def load_recipe(folder):
    """The one class of recipe in a folder."""
    module_spec = importlib.util.spec_from_file_location("recipe", folder / "conanfile.py")
    module = importlib.util.module_from_spec(module_spec)
    module_spec.loader.exec_module(module)
    (recipe,) = [value for value in vars(module).values()
                 if isinstance(value, type) and issubclass(value, ConanFile) and value is not ConanFile]
    return recipe


def check_equal(what, expected, actual):
    if actual != expected:
        raise AssertionError(f"{what}\n    should be {expected}\n    but is    {actual}")


def check_refusals(recipe, folder):
    """What the library is not made for must be refused."""
    refused = [
        {"os": "Macos"},
        {"arch": "armv8"},
        {"cppstd": "17"},
        {"cppstd": "gnu17"},
        {"os": "Windows", "compiler": "msvc"},
    ]
    for change in refused:
        try:
            recipe(str(folder), make_settings(False, **change), None).validate()
        except ConanInvalidConfiguration:
            continue
        raise AssertionError(f"the recipe accepts {change}")


def make_package(recipe, folder, machine, work, windows):
    """All steps from the recipe to the package."""
    package = recipe(str(folder), make_settings(windows), machine)
    package.export_sources_folder = str(work / "sources")
    package.export_sources()
    package.layout()
    check_equal("the root of the layout", machine.arguments.source,
                os.path.normpath(os.path.join(str(folder), package.folders.root)))
    # In its cache Conan builds the exported sources.
    package.set_base_folders(str(work / "sources"), str(work / "build"))
    package.package_folder = str(work / "package")
    package.validate()
    package.requirements()
    names = ["zlib"] if windows else ["zlib", "openssl", "libxml2", "libxslt"]
    check_equal("the requirements", names, [reference.split("/")[0] for reference in package.required])
    package.generate()
    package.build()
    package.package()
    package.package_info()
    return package


def check_contents(package, version, windows):
    files = {path.relative_to(package.package_folder).as_posix()
             for path in pathlib.Path(package.package_folder).rglob("*") if not path.is_dir()}
    headers = {name for name in files if name.startswith("include/VontalBase/") and name.endswith(".h")}
    if "include/VontalBase/VontalBase.h" not in headers:
        raise AssertionError("the package has no header for applications")
    libraries = {"bin/VontalBase.dll", "lib/libVontalBase.dll.a"} if windows else {
        "lib/libVontalBase.so", f"lib/libVontalBase.so.{version.split('.')[0]}", f"lib/libVontalBase.so.{version}"}
    check_equal("what is in the package", sorted(libraries | {"licenses/LICENSE"}), sorted(files - headers))
    print(f"the package has {len(headers)} headers, and", *sorted(files - headers))


def test_package(package, folder, machine, work, windows):
    recipe = load_recipe(folder)
    test = recipe(str(folder), make_settings(windows), machine)
    test.tested_reference_str = f"{package.name}/{package.version}"
    test.requirements()
    check_equal("what the test requires", [test.tested_reference_str], test.required)
    test.dependencies = [package]
    test.layout()
    test.set_base_folders(str(folder), str(work / "test"))
    for generator in test.generators:
        {"CMakeDeps": CMakeDeps, "CMakeToolchain": CMakeToolchain}[generator](test).generate()
    test.build()
    test.test()


def main():
    parser = argparse.ArgumentParser()
    for name in ("source", "build", "work", "cxx", "version"):
        parser.add_argument(f"--{name}", required=True)
    for name in ("toolchain", "emulator"):
        parser.add_argument(f"--{name}", default="")
    arguments = parser.parse_args()
    # The outcome must not depend on what the caller's shell says.
    for name in ("CXXFLAGS", "LDFLAGS", "LD_LIBRARY_PATH", "LIBRARY_PATH", "CPATH", "CMAKE_PREFIX_PATH", "DESTDIR"):
        os.environ.pop(name, None)
    windows = bool(arguments.toolchain)
    work = pathlib.Path(arguments.work)
    shutil.rmtree(work, ignore_errors=True)
    folder = pathlib.Path(arguments.source) / "packaging" / "conan"
    machine = Machine(arguments)

    recipe = load_recipe(folder)
    check_equal("the recipe's version", arguments.version, recipe.version)
    check_refusals(recipe, folder)
    package = make_package(recipe, folder, machine, work, windows)
    check_contents(package, arguments.version, windows)

    machine.libraries = [os.path.join(package.package_folder, "bin" if windows else "lib")]
    if windows:
        # The package brings neither the compiler's DLLs nor that of zlib.
        zlib = subprocess.run([arguments.cxx, "-print-file-name=zlib1.dll"], check=True, stdout=subprocess.PIPE,
                              text=True).stdout.strip()
        machine.libraries += [os.path.join(arguments.build, "bin"), os.path.dirname(os.path.realpath(zlib))]
    test_package(package, folder / "test_package", machine, work, windows)


main()

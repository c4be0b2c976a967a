"""Stands for those parts of Conan 2 that the recipe in packaging/conan uses.

They really configure, build, install and copy, and do no more than what the recipe relies on. What a recipe sets and
nobody knows here is an error.
"""

import os
import subprocess
import types


class CppInfo:
    def __init__(self):
        object.__setattr__(self, "libs", [])
        object.__setattr__(self, "properties", {})

    def __setattr__(self, name, value):
        if name != "libs":
            raise AttributeError(f"cpp_info.{name} is not known here")
        object.__setattr__(self, name, value)

    def set_property(self, name, value):
        if name not in ("cmake_file_name", "cmake_target_name", "pkg_config_name"):
            raise ValueError(f"the property {name} is not known here")
        self.properties[name] = value


class ConanFile:
    name = None
    version = None
    generators = ()

    def __init__(self, recipe_folder, settings, machine):
        self.recipe_folder = recipe_folder
        self.settings = types.SimpleNamespace(**settings)
        self.machine = machine  # of the stand-in: how this machine builds and starts programs
        self.folders = types.SimpleNamespace(root=None, source=".", build=".", generators=".")
        self.cpp = types.SimpleNamespace(build=types.SimpleNamespace(bindir="."))
        self.cpp_info = CppInfo()
        self.required = []
        self.dependencies = []

    def requires(self, reference):
        self.required.append(reference)

    def set_base_folders(self, source, build):
        """Gives the folders of the layout their places."""
        self.source_folder = os.path.normpath(os.path.join(source, self.folders.source))
        self.build_folder = os.path.normpath(os.path.join(build, self.folders.build))
        self.generators_folder = os.path.normpath(os.path.join(build, self.folders.generators))
        os.makedirs(self.build_folder, exist_ok=True)
        os.makedirs(self.generators_folder, exist_ok=True)

    def run(self, command, env=None):
        if env not in (None, "conanrun"):
            raise ValueError(f"the environment {env} is not known here")
        self.machine.start(command, self.build_folder)

    def execute(self, *command):
        result = subprocess.run(command, check=False, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        if result.returncode != 0:
            raise RuntimeError(f"failed ({result.returncode}): {' '.join(command)}\n{result.stdout}")

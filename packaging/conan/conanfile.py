"""Conan 2 recipe. It builds the source tree that it lies in: conan create packaging/conan"""

import os

from conan import ConanFile
from conan.errors import ConanInvalidConfiguration
from conan.tools.build import check_min_cppstd
from conan.tools.cmake import CMake, CMakeDeps, CMakeToolchain, cmake_layout
from conan.tools.files import copy, rmdir


class VontalBase(ConanFile):
    name = "vontalbase"
    version = "0.1.0"
    description = "Foundation library for C++ applications on Linux and Windows"
    license = "MIT"
    package_type = "shared-library"
    settings = "os", "arch", "compiler", "build_type"

    def export_sources(self):
        root = os.path.join(self.recipe_folder, os.pardir, os.pardir)
        for pattern in ("CMakeLists.txt", "LICENSE", "VontalBase/*", "cmake/*", "packaging/debian/*"):
            copy(self, pattern, src=root, dst=self.export_sources_folder)

    def layout(self):
        # Where the recipe is used in its own tree, the sources are two levels above it.
        self.folders.root = os.path.join(os.pardir, os.pardir)
        cmake_layout(self)

    def validate(self):
        if self.settings.os not in ("Linux", "Windows") or self.settings.arch != "x86_64":
            raise ConanInvalidConfiguration("VontalBase is for Linux and Windows on x86_64")
        if self.settings.os == "Windows" and self.settings.compiler != "gcc":
            raise ConanInvalidConfiguration("VontalBase is built with mingw-w64 g++ on Windows")
        check_min_cppstd(self, 20)

    def requirements(self):
        self.requires("zlib/[>=1.2.11 <2]")
        if self.settings.os != "Windows":
            self.requires("openssl/[>=3 <4]")
            self.requires("libxml2/[>=2.9 <3]")
            self.requires("libxslt/[>=1.1 <2]")

    def generate(self):
        toolchain = CMakeToolchain(self)
        toolchain.cache_variables["VONTALBASE_BUILD_EXAMPLES"] = False
        # The zlib of the requirement, of whichever kind it is, and no DLLs that are not the package's own.
        toolchain.cache_variables["ZLIB_USE_STATIC_LIBS"] = False
        toolchain.cache_variables["VONTALBASE_INSTALL_RUNTIME"] = False
        toolchain.generate()
        CMakeDeps(self).generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        CMake(self).install()
        copy(self, "LICENSE", src=self.source_folder, dst=os.path.join(self.package_folder, "licenses"))
        # What finds the package is made by Conan, from package_info().
        for folder in (os.path.join("lib", "cmake"), os.path.join("lib", "pkgconfig"), "share"):
            rmdir(self, os.path.join(self.package_folder, folder))

    def package_info(self):
        self.cpp_info.libs = ["VontalBase"]
        self.cpp_info.set_property("cmake_file_name", "VontalBase")
        self.cpp_info.set_property("cmake_target_name", "VontalBase::VontalBase")
        self.cpp_info.set_property("pkg_config_name", "vontalbase")

import json
import os

# A package as Conan describes it to CMake. The root is where the package is.
CONFIG = """\
set({file}_FOUND TRUE)
add_library({target} SHARED IMPORTED)
set_target_properties({target} PROPERTIES
    INTERFACE_INCLUDE_DIRECTORIES "{root}/include"
    IMPORTED_LOCATION "{location}"
    IMPORTED_IMPLIB "{implib}")
"""


def cmake_layout(conanfile):
    build_type = str(conanfile.settings.build_type)
    conanfile.folders.source = "."
    conanfile.folders.build = os.path.join("build", build_type)
    conanfile.folders.generators = os.path.join("build", build_type, "generators")
    conanfile.cpp.build.bindir = "."


class CMakeToolchain:
    def __init__(self, conanfile):
        self.conanfile = conanfile
        self.cache_variables = {}

    def generate(self):
        values = {name: ("ON" if value else "OFF") if isinstance(value, bool) else value
                  for name, value in self.cache_variables.items()}
        values.update({
            "CMAKE_BUILD_TYPE": str(self.conanfile.settings.build_type),
            "CMAKE_INSTALL_BINDIR": "bin",
            "CMAKE_INSTALL_INCLUDEDIR": "include",
            "CMAKE_INSTALL_LIBDIR": "lib",
            "CMAKE_PREFIX_PATH": self.conanfile.generators_folder,
        })
        with open(os.path.join(self.conanfile.generators_folder, "values.json"), "w", encoding="utf-8") as file:
            json.dump(values, file)


class CMakeDeps:
    """Finds for a package what its package_info() says. What the machine itself has is found as it always is."""

    def __init__(self, conanfile):
        self.conanfile = conanfile

    def generate(self):
        for package in self.conanfile.dependencies:
            root = package.package_folder
            properties = package.cpp_info.properties
            (library,) = package.cpp_info.libs
            windows = package.settings.os == "Windows"
            text = CONFIG.format(
                file=properties["cmake_file_name"], target=properties["cmake_target_name"], root=root,
                location=f"{root}/bin/{library}.dll" if windows else f"{root}/lib/lib{library}.so",
                implib=f"{root}/lib/lib{library}.dll.a" if windows else "")
            name = f"{properties['cmake_file_name']}Config.cmake"
            with open(os.path.join(self.conanfile.generators_folder, name), "w", encoding="utf-8") as file:
                file.write(text)


class CMake:
    def __init__(self, conanfile):
        self.conanfile = conanfile

    def configure(self):
        conanfile = self.conanfile
        with open(os.path.join(conanfile.generators_folder, "values.json"), encoding="utf-8") as file:
            values = json.load(file)
        values["CMAKE_INSTALL_PREFIX"] = getattr(conanfile, "package_folder", "")
        values.update(conanfile.machine.cmake_values)
        conanfile.execute("cmake", "-G", "Ninja", "-S", conanfile.source_folder, "-B", conanfile.build_folder,
                          *(f"-D{name}={value}" for name, value in values.items()))
        conanfile.machine.configured(conanfile)

    def build(self):
        self.conanfile.execute("cmake", "--build", self.conanfile.build_folder)

    def install(self):
        self.conanfile.execute("cmake", "--install", self.conanfile.build_folder, "--prefix",
                               self.conanfile.package_folder)

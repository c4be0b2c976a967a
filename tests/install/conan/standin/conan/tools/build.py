from conan.errors import ConanInvalidConfiguration


def check_min_cppstd(conanfile, minimum):
    if int(conanfile.settings.compiler.cppstd.removeprefix("gnu")) < minimum:
        raise ConanInvalidConfiguration(f"C++{minimum} is needed")


def can_run(_conanfile):
    return True

# Runs the portfile of the vcpkg port with functions that stand for those of vcpkg, and builds and runs the foreign
# application against what it installs. The objects of the finished build tree are taken where the port would
# compile the same ones again.
#
# Needs BUILD (a finished build tree), SOURCE, PYTHON, and what foreign.cmake needs.

cmake_minimum_required(VERSION 3.25)
include("${CMAKE_CURRENT_LIST_DIR}/foreign.cmake")

file(REMOVE_RECURSE "${WORK}")
file(MAKE_DIRECTORY "${WORK}")

# What vcpkg tells a port.
set(PORT vontalbase)
set(TARGET_TRIPLET x64-linux)
set(VCPKG_LIBRARY_LINKAGE static)
set(VCPKG_BUILD_TYPE release)
if(TOOLCHAIN)
    set(TARGET_TRIPLET x64-mingw-dynamic)
    set(VCPKG_LIBRARY_LINKAGE dynamic)
endif()
set(CURRENT_BUILDTREES_DIR "${WORK}/buildtrees/${PORT}")
set(CURRENT_PACKAGES_DIR "${WORK}/${PORT}_${TARGET_TRIPLET}")

set(SETTINGS -G Ninja "-DCMAKE_CXX_COMPILER=${CXX}" -DCMAKE_EXPORT_COMPILE_COMMANDS=ON
    "-DCMAKE_CXX_COMPILER_LAUNCHER=${CMAKE_CURRENT_LIST_DIR}/reuse-object")
if(TOOLCHAIN)
    list(APPEND SETTINGS "-DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN}")
endif()

include("${CMAKE_CURRENT_LIST_DIR}/vcpkg/functions.cmake")
include("${SOURCE}/packaging/vcpkg/ports/vontalbase/portfile.cmake")

string(REGEX MATCH "^[0-9]+" major "${VERSION}")
set(libraries lib/libVontalBase.so "lib/libVontalBase.so.${major}" "lib/libVontalBase.so.${VERSION}")
if(TOOLCHAIN)
    set(libraries bin/VontalBase.dll lib/libVontalBase.dll.a)
endif()
expect_files("${CURRENT_PACKAGES_DIR}" include ${libraries} lib/pkgconfig/vontalbase.pc
    share/vontalbase/VontalBaseConfig.cmake share/vontalbase/VontalBaseConfigVersion.cmake
    share/vontalbase/VontalBaseTargets.cmake share/vontalbase/VontalBaseTargets-release.cmake
    share/vontalbase/copyright share/vontalbase/usage)
set(others)
if(TOOLCHAIN)
    # The port brings neither the compiler's DLLs nor that of zlib.
    run("${CXX}" -print-file-name=zlib1.dll)
    get_filename_component(zlib "${output}" REALPATH)
    get_filename_component(zlib "${zlib}" DIRECTORY)
    set(others "${BUILD}/bin" "${zlib}")
endif()
use_tree("${CURRENT_PACKAGES_DIR}" lib ${others})

# Makes the zip for Windows, looks at what is in it, unpacks it into an empty place, and builds and runs the
# foreign application against that.
#
# Needs BUILD (a finished build tree), CPACK, and what foreign.cmake needs.

cmake_minimum_required(VERSION 3.25)
include("${CMAKE_CURRENT_LIST_DIR}/foreign.cmake")

file(REMOVE_RECURSE "${WORK}")
file(MAKE_DIRECTORY "${WORK}/unpacked")
run("${CPACK}" --config "${BUILD}/CPackConfig.cmake" -G ZIP -B "${WORK}/packages")
file(GLOB packages RELATIVE "${WORK}/packages" "${WORK}/packages/*.zip")
set(name "vontalbase-${VERSION}-windows-x86_64")
expect_equal("the packages" "${name}.zip" "${packages}")

run("${CMAKE_COMMAND}" -E chdir "${WORK}/unpacked" "${CMAKE_COMMAND}" -E tar xf "${WORK}/packages/${name}.zip")
file(GLOB folders RELATIVE "${WORK}/unpacked" "${WORK}/unpacked/*")
expect_equal("the folders in the zip" "${name}" "${folders}")
set(root "${WORK}/unpacked/${name}")
expect_files("${root}" include
    bin/VontalBase.dll bin/libgcc_s_seh-1.dll bin/libstdc++-6.dll bin/libwinpthread-1.dll
    lib/libVontalBase.dll.a
    lib/cmake/VontalBase/VontalBaseConfig.cmake lib/cmake/VontalBase/VontalBaseConfigVersion.cmake
    lib/cmake/VontalBase/VontalBaseTargets.cmake lib/cmake/VontalBase/VontalBaseTargets-release.cmake
    lib/pkgconfig/vontalbase.pc share/doc/VontalBase/LICENSE)
use_tree("${root}" lib)

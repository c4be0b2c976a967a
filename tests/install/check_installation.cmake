# Installs the library into an empty prefix, moves the prefix, and builds and runs a small foreign
# application against it: once through the CMake package, once through pkg-config. Then the CMake package is asked
# for other versions.
#
# Needs BUILD (a finished build tree), LIBDIR, and what foreign.cmake needs.

cmake_minimum_required(VERSION 3.25)
include("${CMAKE_CURRENT_LIST_DIR}/foreign.cmake")

file(REMOVE_RECURSE "${WORK}")
file(MAKE_DIRECTORY "${WORK}")
run("${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${WORK}/first")
# Nothing in the installed tree may remember where it was installed.
set(prefix "${WORK}/prefix")
file(RENAME "${WORK}/first" "${prefix}")

string(REGEX MATCH "^([0-9]+)\\.([0-9]+)\\.([0-9]+)$" version "${VERSION}")
set(major "${CMAKE_MATCH_1}")
set(minor "${CMAKE_MATCH_2}")
set(patch "${CMAKE_MATCH_3}")
if(TOOLCHAIN)
    set(libraries bin/VontalBase.dll bin/libstdc++-6.dll bin/libgcc_s_seh-1.dll bin/libwinpthread-1.dll
        "${LIBDIR}/libVontalBase.dll.a")
else()
    set(libraries "${LIBDIR}/libVontalBase.so" "${LIBDIR}/libVontalBase.so.${major}"
        "${LIBDIR}/libVontalBase.so.${VERSION}")
endif()
set(package "${LIBDIR}/cmake/VontalBase")
expect_files("${prefix}" include ${libraries}
    "${package}/VontalBaseConfig.cmake" "${package}/VontalBaseConfigVersion.cmake"
    "${package}/VontalBaseTargets.cmake" "${package}/VontalBaseTargets-release.cmake"
    "${LIBDIR}/pkgconfig/vontalbase.pc" share/doc/VontalBase/LICENSE)

use_tree("${prefix}" "${LIBDIR}")

# Versions that may be asked for. Before version 1 another minor version is another interface.
math(EXPR next_major "${major} + 1")
math(EXPR next_minor "${minor} + 1")
math(EXPR next_patch "${patch} + 1")
set(accepted "${major}.${minor}" "${VERSION}" "${VERSION}|EXACT" "${major}.${minor}...<${major}.${next_minor}")
set(refused "${major}.${next_minor}" "${major}.${minor}.${next_patch}" "${next_major}.0" "${major}.${minor}|EXACT")
if(major EQUAL 0)
    if(minor GREATER 0)
        math(EXPR last_minor "${minor} - 1")
        list(APPEND refused "0.${last_minor}")
    endif()
    list(APPEND refused "0.${minor}...0.${next_minor}")
endif()
list(JOIN accepted "," accepted)
list(JOIN refused "," refused)
run("${CMAKE_COMMAND}" -S "${CMAKE_CURRENT_LIST_DIR}/versions" -B "${WORK}/versions" ${foreign_settings}
    "-DCMAKE_PREFIX_PATH=${prefix}" "-DACCEPTED=${accepted}" "-DREFUSED=${refused}")
message("${output}")

# The failure tells what was wanted and what is there.
run_refused("${CMAKE_COMMAND}" -S "${APPLICATION}" -B "${WORK}/wrong-version" ${foreign_settings}
    "-DCMAKE_PREFIX_PATH=${prefix}" "-DVONTALBASE_WANTED=${major}.${next_minor}")
foreach(text IN ITEMS "package \"VontalBase\" that is compatible with requested version \"${major}.${next_minor}\""
        "VontalBaseConfig.cmake, version: ${VERSION}")
    string(FIND "${output}" "${text}" position)
    if(position LESS 0)
        message(FATAL_ERROR "the failure of a wrong version does not say '${text}':\n${output}")
    endif()
endforeach()

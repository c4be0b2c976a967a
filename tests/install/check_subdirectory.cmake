# Builds the foreign application with the library's source tree as a part of it, starts it, and installs it in the ways
# that there are. The objects of the finished build tree are taken where the same would be compiled again.
#
# Needs BUILD (a finished build tree), SOURCE, PYTHON, and what foreign.cmake needs.

cmake_minimum_required(VERSION 3.25)
include("${CMAKE_CURRENT_LIST_DIR}/foreign.cmake")

file(REMOVE_RECURSE "${WORK}")
run("${CMAKE_COMMAND}" -S "${CMAKE_CURRENT_LIST_DIR}/subdirectory" -B "${WORK}/tree" ${foreign_settings}
    "-DVONTALBASE_SOURCE=${SOURCE}" -DCMAKE_INSTALL_LIBDIR=lib -DCMAKE_EXPORT_COMPILE_COMMANDS=ON
    "-DCMAKE_CXX_COMPILER_LAUNCHER=${CMAKE_CURRENT_LIST_DIR}/reuse-object")
run("${PYTHON}" "${CMAKE_CURRENT_LIST_DIR}/reuse_objects.py" "${BUILD}" "${SOURCE}" "${WORK}/tree" "${SOURCE}")
message("${output}")
run("${CMAKE_COMMAND}" --build "${WORK}/tree")

# The application brings neither our tests nor our examples along.
file(GLOB_RECURSE programs "${WORK}/tree/*example*" "${WORK}/tree/*_test*")
expect_equal("what else was built" "" "${programs}")
set(libraries "${WORK}/tree/VontalBase")
if(TOOLCHAIN)
    set(libraries "${WORK}/tree/VontalBase/bin")
endif()
run_program("${libraries}" "${WORK}/tree/application${foreign_suffix}")
message("as a subdirectory: ${output}")

# Its installation brings all of the library along, or what it needs to run, or nothing.
run("${CMAKE_COMMAND}" --install "${WORK}/tree" --prefix "${WORK}/all")
if(NOT EXISTS "${WORK}/all/include/VontalBase/VontalBase.h" OR NOT EXISTS "${WORK}/all/bin/application${foreign_suffix}")
    message(FATAL_ERROR "the installation has not everything")
endif()

string(REGEX MATCH "^[0-9]+" major "${VERSION}")
if(TOOLCHAIN)
    set(libraries bin/VontalBase.dll bin/libstdc++-6.dll bin/libgcc_s_seh-1.dll bin/libwinpthread-1.dll)
else()
    set(libraries lib/libVontalBase.so.${major} "lib/libVontalBase.so.${VERSION}")
endif()
run("${CMAKE_COMMAND}" --install "${WORK}/tree" --prefix "${WORK}/runtime" --component Runtime)
expect_files("${WORK}/runtime" "" "bin/application${foreign_suffix}" ${libraries} share/doc/VontalBase/LICENSE)

run("${CMAKE_COMMAND}" -DHOW=EXCLUDE_FROM_ALL "${WORK}/tree")
run("${CMAKE_COMMAND}" --build "${WORK}/tree")
run("${CMAKE_COMMAND}" --install "${WORK}/tree" --prefix "${WORK}/alone")
expect_files("${WORK}/alone" "" "bin/application${foreign_suffix}")

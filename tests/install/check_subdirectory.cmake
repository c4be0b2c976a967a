# Builds the foreign application with the library's source tree as a part of it, and starts it. The objects of the
# finished build tree are taken where the same would be compiled again.
#
# Needs BUILD (a finished build tree), SOURCE, PYTHON, and what foreign.cmake needs.

cmake_minimum_required(VERSION 3.25)
include("${CMAKE_CURRENT_LIST_DIR}/foreign.cmake")

file(REMOVE_RECURSE "${WORK}")
run("${CMAKE_COMMAND}" -S "${CMAKE_CURRENT_LIST_DIR}/subdirectory" -B "${WORK}/tree" ${foreign_settings}
    "-DVONTALBASE_SOURCE=${SOURCE}" -DCMAKE_EXPORT_COMPILE_COMMANDS=ON
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

# Installs the library into an empty prefix, moves the prefix, and builds and runs a small foreign
# application against it: once through the CMake package, once through pkg-config.
#
# Needs BUILD (a finished build tree), APPLICATION, WORK, CXX, PKG_CONFIG and LIBDIR.

cmake_minimum_required(VERSION 3.25)

# The outcome must not depend on what the caller's shell says.
foreach(name IN ITEMS CXXFLAGS LDFLAGS LD_LIBRARY_PATH LIBRARY_PATH CPATH CMAKE_PREFIX_PATH PKG_CONFIG_PATH DESTDIR)
    unset(ENV{${name}})
endforeach()

function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
    if(NOT result EQUAL 0)
        list(JOIN ARGN " " command)
        message(FATAL_ERROR "failed (${result}): ${command}\n${output}")
    endif()
    string(STRIP "${output}" output)
    set(output "${output}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE "${WORK}")
file(MAKE_DIRECTORY "${WORK}")
run("${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${WORK}/first")
# Nothing in the installed tree may remember where it was installed.
file(RENAME "${WORK}/first" "${WORK}/prefix")
set(prefix "${WORK}/prefix")

file(GLOB_RECURSE installed RELATIVE "${prefix}" "${prefix}/*")
message("installed:")
foreach(file IN LISTS installed)
    message("    ${file}")
    if(file MATCHES "\\.h$")
        file(STRINGS "${prefix}/${file}" head LIMIT_COUNT 5)
        if(";${head};" MATCHES ";/// @internal;")
            message(FATAL_ERROR "a private header was installed: ${file}")
        endif()
    endif()
endforeach()

run("${CMAKE_COMMAND}" -S "${APPLICATION}" -B "${WORK}/through-cmake" -G Ninja
    "-DCMAKE_CXX_COMPILER=${CXX}" -DCMAKE_BUILD_TYPE=Release "-DCMAKE_PREFIX_PATH=${prefix}")
run("${CMAKE_COMMAND}" --build "${WORK}/through-cmake")
run("${WORK}/through-cmake/application")
message("through CMake: ${output}")

set(ENV{PKG_CONFIG_PATH} "${prefix}/${LIBDIR}/pkgconfig")
run("${PKG_CONFIG}" --cflags --libs vontalbase)
separate_arguments(flags UNIX_COMMAND "${output}")
run("${CXX}" -std=c++20 "${APPLICATION}/main.cpp" ${flags} -o "${WORK}/through-pkg-config")
run("${CMAKE_COMMAND}" -E env "LD_LIBRARY_PATH=${prefix}/${LIBDIR}" "${WORK}/through-pkg-config")
message("through pkg-config: ${output}")

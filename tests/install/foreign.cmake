# What the checks of installations and packages share: how they run commands, and the small foreign application
# that is built against an installed tree and started.
#
# Needs APPLICATION (its folder), VERSION (of the library), WORK, CXX, PKG_CONFIG, and for a system that is not
# the builder's own TOOLCHAIN (a file) and EMULATOR (a command that starts its programs).

# The outcome must not depend on what the caller's shell says.
foreach(name IN ITEMS CXXFLAGS LDFLAGS LD_LIBRARY_PATH LIBRARY_PATH CPATH CMAKE_PREFIX_PATH CMAKE_GENERATOR
        PKG_CONFIG_PATH PKG_CONFIG_LIBDIR PKG_CONFIG_SYSROOT_DIR DESTDIR WINEPATH)
    unset(ENV{${name}})
endforeach()

function(describe_failure command result output)
    list(JOIN command " " command)
    message(FATAL_ERROR "failed (${result}): ${command}\n${output}")
endfunction()

# run(COMMAND...) must succeed; sets output.
function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
    if(NOT result EQUAL 0)
        describe_failure("${ARGN}" "${result}" "${output}")
    endif()
    string(STRIP "${output}" output)
    set(output "${output}" PARENT_SCOPE)
endfunction()

# run_refused(COMMAND...) must not succeed; sets output, with its line ends made spaces.
function(run_refused)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
    if(result EQUAL 0)
        describe_failure("${ARGN}" "a success that should have been none" "${output}")
    endif()
    string(REGEX REPLACE "[ \n]+" " " output "${output}")
    set(output "${output}" PARENT_SCOPE)
endfunction()

function(expect_equal what expected actual)
    if(NOT "${expected}" STREQUAL "${actual}")
        message(FATAL_ERROR "${what}\n    should be ${expected}\n    but is    ${actual}")
    endif()
endfunction()

# The files of a folder, without the public headers, must be exactly these. Each public header is one that
# applications may see, and the header for all of them is there.
function(expect_files folder headers)
    file(GLOB_RECURSE files RELATIVE "${folder}" "${folder}/*")
    message("in ${folder}:")
    set(others)
    foreach(file IN LISTS files)
        message("    ${file}")
        string(FIND "${file}" "${headers}/VontalBase/" position)
        if(headers AND position EQUAL 0 AND file MATCHES "\\.h$")
            file(STRINGS "${folder}/${file}" head LIMIT_COUNT 5)
            if(";${head};" MATCHES ";/// @internal;")
                message(FATAL_ERROR "a private header was installed: ${file}")
            endif()
        else()
            list(APPEND others "${file}")
        endif()
    endforeach()
    set(expected ${ARGN})
    list(SORT expected)
    list(SORT others)
    expect_equal("what is in ${folder}" "${expected}" "${others}")
    if(headers AND NOT EXISTS "${folder}/${headers}/VontalBase/VontalBase.h")
        message(FATAL_ERROR "${folder} has no ${headers}/VontalBase/VontalBase.h")
    endif()
endfunction()

set(foreign_settings -G Ninja "-DCMAKE_CXX_COMPILER=${CXX}" -DCMAKE_BUILD_TYPE=Release)
if(TOOLCHAIN)
    list(APPEND foreign_settings "-DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN}")
    set(foreign_suffix .exe)
endif()

# run_program(FOLDER PROGRAM) starts a program where the libraries in FOLDER are found; sets output.
function(run_program folder program)
    if(EMULATOR)
        set(ENV{WINEPATH} "Z:${folder}")
    else()
        set(ENV{LD_LIBRARY_PATH} "${folder}")
    endif()
    run(${EMULATOR} "${program}")
    unset(ENV{WINEPATH})
    unset(ENV{LD_LIBRARY_PATH})
    set(output "${output}" PARENT_SCOPE)
endfunction()

# use_tree(PREFIX LIBDIR [FOLDER...]) builds the application against an installed tree, once through the CMake
# package and once through pkg-config, and starts it. It finds DLLs in the folder bin of the tree and in FOLDER.
function(use_tree prefix libdir)
    set(libraries "${prefix}/${libdir}")
    if(TOOLCHAIN)
        list(TRANSFORM ARGN PREPEND "\\;Z:" OUTPUT_VARIABLE others)
        set(libraries "${prefix}/bin${others}")
    endif()

    get_filename_component(name "${prefix}" NAME)
    set(tree "${WORK}/${name}-through-cmake")
    run("${CMAKE_COMMAND}" -S "${APPLICATION}" -B "${tree}" ${foreign_settings}
        "-DCMAKE_PREFIX_PATH=${prefix}" "-DVONTALBASE_WANTED=${VERSION}")
    run("${CMAKE_COMMAND}" --build "${tree}")
    run_program("${libraries}" "${tree}/application${foreign_suffix}")
    message("through CMake: ${output}")

    # Nothing but this tree is searched, so a library that the machine has cannot take its place.
    set(ENV{PKG_CONFIG_LIBDIR} "${prefix}/${libdir}/pkgconfig")
    run("${PKG_CONFIG}" --modversion vontalbase)
    expect_equal("the version that pkg-config tells" "${VERSION}" "${output}")
    run("${PKG_CONFIG}" --cflags --libs vontalbase)
    unset(ENV{PKG_CONFIG_LIBDIR})
    separate_arguments(flags UNIX_COMMAND "${output}")
    set(program "${WORK}/${name}-through-pkg-config${foreign_suffix}")
    run("${CXX}" -std=c++20 "${APPLICATION}/main.cpp" ${flags} -o "${program}")
    run_program("${libraries}" "${program}")
    message("through pkg-config: ${output}")
endfunction()

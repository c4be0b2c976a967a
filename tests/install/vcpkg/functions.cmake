# Stands for those functions of vcpkg that the port calls. They really configure, build and install, but for a
# release alone (as with VCPKG_BUILD_TYPE), and they do no more than what the port relies on.
#
# Needs run() of foreign.cmake, BUILD, SOURCE, PYTHON, SETTINGS (further arguments to configure with), and the
# variables that vcpkg gives to a port.

function(parse_arguments_of_vcpkg flags values lists)
    cmake_parse_arguments(arg "${flags}" "${values}" "${lists}" ${ARGN})
    if(arg_UNPARSED_ARGUMENTS)
        message(FATAL_ERROR "vcpkg knows no argument ${arg_UNPARSED_ARGUMENTS}")
    endif()
    foreach(name IN LISTS flags values lists)
        set(arg_${name} "${arg_${name}}" PARENT_SCOPE)
    endforeach()
endfunction()

function(vcpkg_check_linkage)
    parse_arguments_of_vcpkg("ONLY_DYNAMIC_LIBRARY" "" "" ${ARGN})
    if(arg_ONLY_DYNAMIC_LIBRARY)
        set(VCPKG_LIBRARY_LINKAGE dynamic PARENT_SCOPE)
    endif()
endfunction()

function(vcpkg_cmake_configure)
    parse_arguments_of_vcpkg("" "SOURCE_PATH" "OPTIONS;MAYBE_UNUSED_VARIABLES" ${ARGN})
    set(shared OFF)
    if(VCPKG_LIBRARY_LINKAGE STREQUAL "dynamic")
        set(shared ON)
    endif()
    run("${CMAKE_COMMAND}" -S "${arg_SOURCE_PATH}" -B "${CURRENT_BUILDTREES_DIR}/${TARGET_TRIPLET}-rel"
        ${SETTINGS} -DCMAKE_BUILD_TYPE=Release "-DBUILD_SHARED_LIBS=${shared}"
        "-DCMAKE_INSTALL_PREFIX=${CURRENT_PACKAGES_DIR}"
        -DCMAKE_INSTALL_LIBDIR=lib -DCMAKE_INSTALL_BINDIR=bin ${arg_OPTIONS})
    if(output MATCHES "Manually-specified variables were not used by the project:[ \n]+(.*)")
        string(REGEX MATCHALL "[A-Z_]+\n" unused "${CMAKE_MATCH_1}")
        foreach(variable IN LISTS unused)
            string(STRIP "${variable}" variable)
            if(NOT variable IN_LIST arg_MAYBE_UNUSED_VARIABLES AND NOT variable STREQUAL "BUILD_SHARED_LIBS")
                message(FATAL_ERROR "the project does not use ${variable}")
            endif()
        endforeach()
    endif()
    run("${PYTHON}" "${SOURCE}/tests/install/reuse_objects.py" "${BUILD}" "${SOURCE}"
        "${CURRENT_BUILDTREES_DIR}/${TARGET_TRIPLET}-rel" "${SOURCE}")
    message("${output}")
endfunction()

function(vcpkg_cmake_install)
    parse_arguments_of_vcpkg("" "" "" ${ARGN})
    run("${CMAKE_COMMAND}" --build "${CURRENT_BUILDTREES_DIR}/${TARGET_TRIPLET}-rel" --target install)
endfunction()

# Moves the CMake package to share/PORT, and has it find the root of the installation from there.
function(vcpkg_cmake_config_fixup)
    parse_arguments_of_vcpkg("" "CONFIG_PATH" "" ${ARGN})
    file(RENAME "${CURRENT_PACKAGES_DIR}/${arg_CONFIG_PATH}" "${CURRENT_PACKAGES_DIR}/share/${PORT}")
    get_filename_component(parent "${CURRENT_PACKAGES_DIR}/${arg_CONFIG_PATH}" DIRECTORY)
    file(GLOB left "${parent}/*")
    if(NOT left)
        file(REMOVE_RECURSE "${parent}")
    endif()
    file(GLOB files "${CURRENT_PACKAGES_DIR}/share/${PORT}/*.cmake")
    foreach(file IN LISTS files)
        file(READ "${file}" text)
        string(REPLACE "\${CMAKE_CURRENT_LIST_DIR}/../../../" "\${CMAKE_CURRENT_LIST_DIR}/../../" text "${text}")
        string(REGEX REPLACE
            "get_filename_component\\(_IMPORT_PREFIX \"\\\${CMAKE_CURRENT_LIST_FILE}\" PATH\\)(\nget_filename_component\\(_IMPORT_PREFIX \"\\\${_IMPORT_PREFIX}\" PATH\\))*"
            "get_filename_component(_IMPORT_PREFIX \"\${CMAKE_CURRENT_LIST_FILE}\" PATH)\nget_filename_component(_IMPORT_PREFIX \"\${_IMPORT_PREFIX}\" PATH)\nget_filename_component(_IMPORT_PREFIX \"\${_IMPORT_PREFIX}\" PATH)"
            text "${text}")
        file(WRITE "${file}" "${text}")
    endforeach()
endfunction()

# The file is one that finds its prefix from its own place, so there is nothing to mend.
function(vcpkg_fixup_pkgconfig)
    parse_arguments_of_vcpkg("" "" "" ${ARGN})
    file(STRINGS "${CURRENT_PACKAGES_DIR}/lib/pkgconfig/vontalbase.pc" prefix REGEX "^prefix=\\\${pcfiledir}/\\.\\./\\.\\.$")
    if(NOT prefix)
        message(FATAL_ERROR "the pkg-config file does not find its prefix")
    endif()
endfunction()

function(vcpkg_install_copyright)
    parse_arguments_of_vcpkg("" "" "FILE_LIST" ${ARGN})
    configure_file("${arg_FILE_LIST}" "${CURRENT_PACKAGES_DIR}/share/${PORT}/copyright" COPYONLY)
endfunction()

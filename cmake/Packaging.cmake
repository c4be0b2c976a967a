# cpack: a Debian package on Linux, a zip on Windows.

set(CPACK_PACKAGE_NAME vontalbase)
set(CPACK_PACKAGE_VENDOR "The VontalBase developers")
set(CPACK_PACKAGE_CONTACT "The VontalBase developers <maintainers@vontalbase.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_RESOURCE_FILE_LICENSE "${PROJECT_SOURCE_DIR}/LICENSE")
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/package")
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)

if(WIN32)
    set(CPACK_GENERATOR ZIP)
    set(CPACK_PACKAGE_FILE_NAME "vontalbase-${PROJECT_VERSION}-windows-x86_64")
else()
    set(CPACK_GENERATOR DEB)
    set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
    set(CPACK_DEBIAN_PACKAGE_SECTION libdevel)
    set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
    # The packages that the library needs are read from the library itself.
    find_program(VONTALBASE_DPKG_SHLIBDEPS dpkg-shlibdeps)
    mark_as_advanced(VONTALBASE_DPKG_SHLIBDEPS)
    if(VONTALBASE_DPKG_SHLIBDEPS)
        set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
    endif()
endif()

include(CPack)

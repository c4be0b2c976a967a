# cpack: two Debian packages on Linux, one zip on Windows. The Debian packages are made in a tree that is
# configured for the prefix /usr, as that of the preset linux-release is.

set(CPACK_PACKAGE_NAME vontalbase)
set(CPACK_PACKAGE_VENDOR "The VontalBase developers")
set(CPACK_PACKAGE_CONTACT "The VontalBase developers <maintainers@vontalbase.invalid>")
set(CPACK_RESOURCE_FILE_LICENSE "${PROJECT_SOURCE_DIR}/LICENSE")
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/package")
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_COMPONENTS_ALL Runtime Development)

if(WIN32)
    set(CPACK_GENERATOR ZIP)
    set(CPACK_PACKAGE_FILE_NAME "vontalbase-${PROJECT_VERSION}-windows-x86_64")
else()
    set(CPACK_GENERATOR DEB)
    set(CPACK_DEB_COMPONENT_INSTALL ON)
    set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
    set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
    set(CPACK_DEBIAN_PACKAGE_SOURCE vontalbase)
    set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)

    # The first line of a package's description is the short one; without this CPack would set another before it.
    set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
    set(vontalbase_description
        "VontalBase is what C++20 applications stand on: text and its conversions,
failures that tell their way, shared objects, threads and tasks, child
processes, files, JSON, XML, settings, translated texts, a daily log and zip
archives, all with one interface for Linux and Windows.")

    set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME "libvontalbase${PROJECT_VERSION_MAJOR}")
    set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
    set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "foundation library for C++ applications
${vontalbase_description}

This package holds the shared library.")
    # Before version 1 a minor version may change the interface, but the name of the library stays.
    math(EXPR vontalbase_next_interface "${PROJECT_VERSION_MINOR} + 1")
    set(vontalbase_next_interface "${PROJECT_VERSION_MAJOR}.${vontalbase_next_interface}")
    if(PROJECT_VERSION_MAJOR GREATER 0)
        math(EXPR vontalbase_next_interface "${PROJECT_VERSION_MAJOR} + 1")
    endif()
    configure_file("${PROJECT_SOURCE_DIR}/packaging/debian/shlibs.in"
        "${PROJECT_BINARY_DIR}/packaging/shlibs" @ONLY)
    set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA
        "${PROJECT_BINARY_DIR}/packaging/shlibs" "${PROJECT_SOURCE_DIR}/packaging/debian/triggers")

    set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libvontalbase-dev)
    set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
    set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS Runtime)
    set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
    set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "foundation library for C++ applications (development files)
${vontalbase_description}

This package holds the headers and what CMake and pkg-config need to find the
library.")

    # What only a Debian package holds, and what the library needs.
    set(CPACK_PRE_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/packaging/debian/complete.cmake")
    set(CPACK_VONTALBASE_CHANGELOG "${PROJECT_SOURCE_DIR}/packaging/debian/changelog")
    set(CPACK_VONTALBASE_DOCDIR "${CMAKE_INSTALL_DOCDIR}")
    set(CPACK_VONTALBASE_LIBDIR "${CMAKE_INSTALL_LIBDIR}")
    set(CPACK_VONTALBASE_PREFIX "${CMAKE_INSTALL_PREFIX}")
endif()

include(CPack)

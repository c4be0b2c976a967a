# cmake --install: headers, library, CMake package, pkg-config file.

include(CMakePackageConfigHelpers)

foreach(header IN LISTS vontalbase_public_headers)
    get_filename_component(folder "${header}" DIRECTORY)
    install(FILES "${PROJECT_SOURCE_DIR}/${header}"
        DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/${folder}" COMPONENT Development)
endforeach()

install(TARGETS VontalBase EXPORT VontalBaseTargets
    RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT Runtime
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT Runtime NAMELINK_COMPONENT Development
    ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT Development)
if(vontalbase_runtime_dlls AND VONTALBASE_INSTALL_RUNTIME)
    install(FILES ${vontalbase_runtime_dlls} DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT Runtime)
endif()

set(vontalbase_package_folder "${CMAKE_INSTALL_LIBDIR}/cmake/VontalBase")
install(EXPORT VontalBaseTargets NAMESPACE VontalBase::
    DESTINATION "${vontalbase_package_folder}" COMPONENT Development)
configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/VontalBaseConfig.cmake.in"
    "${PROJECT_BINARY_DIR}/VontalBaseConfig.cmake"
    INSTALL_DESTINATION "${vontalbase_package_folder}")
# Before version 1 a minor version may change an interface.
set(vontalbase_compatibility SameMinorVersion)
if(PROJECT_VERSION_MAJOR GREATER 0)
    set(vontalbase_compatibility SameMajorVersion)
endif()
write_basic_package_version_file("${PROJECT_BINARY_DIR}/VontalBaseConfigVersion.cmake"
    COMPATIBILITY ${vontalbase_compatibility})
install(FILES
    "${PROJECT_BINARY_DIR}/VontalBaseConfig.cmake"
    "${PROJECT_BINARY_DIR}/VontalBaseConfigVersion.cmake"
    DESTINATION "${vontalbase_package_folder}" COMPONENT Development)

# The pkg-config file finds its prefix from its own place, so that an installed tree may be moved.
set(vontalbase_pkgconfig_folder "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
file(RELATIVE_PATH vontalbase_prefix_from_pkgconfig
    "/prefix/${vontalbase_pkgconfig_folder}" "/prefix")
string(REGEX REPLACE "/$" "" vontalbase_prefix_from_pkgconfig "${vontalbase_prefix_from_pkgconfig}")
configure_file("${PROJECT_SOURCE_DIR}/cmake/vontalbase.pc.in" "${PROJECT_BINARY_DIR}/vontalbase.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/vontalbase.pc"
    DESTINATION "${vontalbase_pkgconfig_folder}" COMPONENT Development)

install(FILES "${PROJECT_SOURCE_DIR}/LICENSE"
    DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT Runtime)

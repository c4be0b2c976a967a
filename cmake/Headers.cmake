# Sorts the headers into public ones, which are installed, and private ones. A header is private if one
# of its first five lines is exactly
#
#     /// @internal
#
# Headers within a half of the platform are always private.
# Sets vontalbase_public_headers to paths relative to the project, such as VontalBase/export.h.

file(GLOB_RECURSE vontalbase_headers CONFIGURE_DEPENDS
    RELATIVE "${PROJECT_SOURCE_DIR}" "${PROJECT_SOURCE_DIR}/VontalBase/*.h")
set(vontalbase_public_headers)
foreach(header IN LISTS vontalbase_headers)
    file(STRINGS "${PROJECT_SOURCE_DIR}/${header}" first_lines LIMIT_COUNT 5)
    if(NOT ";${first_lines};" MATCHES ";/// @internal;" AND NOT header MATCHES "/platform/(posix|windows)/")
        list(APPEND vontalbase_public_headers "${header}")
    endif()
    # A header that changes sides must change the installation as well.
    set_property(DIRECTORY "${PROJECT_SOURCE_DIR}" APPEND PROPERTY
        CMAKE_CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/${header}")
endforeach()

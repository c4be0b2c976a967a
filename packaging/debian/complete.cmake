# Run by cpack between the installation of the two components and the making of their packages: gives each the
# files in share/doc that Debian asks for, tells pkg-config the prefix, and finds out which packages the library needs.
# (CPack would find them too, but then it writes scripts that call ldconfig, where the triggers of this folder do it.)

if(NOT CPACK_GENERATOR STREQUAL "DEB")
    return()
endif()
if(NOT CPACK_VONTALBASE_PREFIX STREQUAL "/usr")
    message(FATAL_ERROR "The Debian packages are made in a build tree that is configured for the prefix /usr: "
        "cmake -DCMAKE_INSTALL_PREFIX=/usr. The one of this tree is ${CPACK_VONTALBASE_PREFIX}.")
endif()

function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE errors)
    if(NOT result EQUAL 0)
        list(JOIN ARGN " " command)
        message(FATAL_ERROR "failed (${result}): ${command}\n${errors}")
    endif()
    string(STRIP "${output}" output)
    set(output "${output}" PARENT_SCOPE)
endfunction()

set(runtime "${CPACK_TEMPORARY_DIRECTORY}/Runtime/usr")
set(development "${CPACK_TEMPORARY_DIRECTORY}/Development/usr")

set(runtime_documents "${runtime}/share/doc/${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME}")
set(development_documents "${development}/share/doc/${CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME}")
file(RENAME "${runtime}/${CPACK_VONTALBASE_DOCDIR}" "${runtime_documents}")
file(RENAME "${runtime_documents}/LICENSE" "${runtime_documents}/copyright")
file(COPY "${CPACK_VONTALBASE_CHANGELOG}" DESTINATION "${runtime_documents}")
run(gzip -9n "${runtime_documents}/changelog")
file(COPY "${runtime_documents}/" DESTINATION "${development_documents}")

# pkg-config leaves the folders of the system out of its flags only where they are told without detours.
set(pkgconfig "${development}/${CPACK_VONTALBASE_LIBDIR}/pkgconfig/vontalbase.pc")
file(READ "${pkgconfig}" text)
string(REGEX REPLACE "^prefix=[^\n]*" "prefix=/usr" text "${text}")
file(WRITE "${pkgconfig}" "${text}")

# dpkg-shlibdeps wants to be called in the tree of a source package.
find_program(VONTALBASE_DPKG_SHLIBDEPS dpkg-shlibdeps)
if(NOT VONTALBASE_DPKG_SHLIBDEPS)
    message(FATAL_ERROR "dpkg-shlibdeps is missing (Debian package dpkg-dev).")
endif()
set(scratch "${CPACK_TEMPORARY_DIRECTORY}/../shlibdeps")
file(WRITE "${scratch}/debian/control" "Source: vontalbase\n\nPackage: any\nArchitecture: any\n")
file(GLOB libraries "${runtime}/${CPACK_VONTALBASE_LIBDIR}/*.so.*.*.*")
run("${CMAKE_COMMAND}" -E chdir "${scratch}" "${VONTALBASE_DPKG_SHLIBDEPS}" -O ${libraries})
if(NOT output MATCHES "^shlibs:Depends=(.+)$")
    message(FATAL_ERROR "dpkg-shlibdeps says of ${libraries} only: ${output}")
endif()
set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS "${CMAKE_MATCH_1}")

# Whatever the mask of the caller is, all may read what the packages hold.
file(GLOB_RECURSE entries LIST_DIRECTORIES true "${CPACK_TEMPORARY_DIRECTORY}/*")
foreach(entry IN LISTS entries)
    if(IS_DIRECTORY "${entry}")
        file(CHMOD "${entry}" PERMISSIONS
            OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
    elseif(NOT IS_SYMLINK "${entry}")
        file(CHMOD "${entry}" PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
    endif()
endforeach()

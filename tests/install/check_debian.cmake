# Makes the Debian packages, looks at what they say of themselves and what is in them, unpacks them into an empty
# place, and builds and runs the foreign application against that.
#
# Needs BUILD (a finished build tree), LIBDIR, CPACK, DPKG_DEB, DPKG_SHLIBDEPS, and what foreign.cmake needs.

cmake_minimum_required(VERSION 3.25)
include("${CMAKE_CURRENT_LIST_DIR}/foreign.cmake")

file(REMOVE_RECURSE "${WORK}")
file(MAKE_DIRECTORY "${WORK}")
# The mask of whoever makes them must not get into the packages.
run(sh -c "umask 077 && exec \"$0\" \"$@\"" "${CPACK}" --config "${BUILD}/CPackConfig.cmake" -G DEB -B "${WORK}/packages")
if(output MATCHES "[Ww]arning")
    message(FATAL_ERROR "cpack warns:\n${output}")
endif()
run(dpkg --print-architecture)
set(architecture "${output}")

string(REGEX MATCH "^([0-9]+)\\.([0-9]+)\\." version "${VERSION}")
set(major "${CMAKE_MATCH_1}")
math(EXPR next_minor "${CMAKE_MATCH_2} + 1")
math(EXPR next_major "${major} + 1")
set(next_interface "${next_major}")
if(major EQUAL 0)
    set(next_interface "0.${next_minor}")
endif()
set(runtime "libvontalbase${major}")
set(development libvontalbase-dev)
set(runtime_file "${WORK}/packages/${runtime}_${VERSION}_${architecture}.deb")
set(development_file "${WORK}/packages/${development}_${VERSION}_${architecture}.deb")
file(GLOB packages RELATIVE "${WORK}/packages" "${WORK}/packages/*.deb")
expect_equal("the packages" "${development}_${VERSION}_${architecture}.deb;${runtime}_${VERSION}_${architecture}.deb"
    "${packages}")

# ---------------------------------------------------------------------------------------------------
# What they say of themselves

function(expect_field file field expected)
    run("${DPKG_DEB}" -f "${file}" "${field}")
    expect_equal("${field} of ${file}" "${expected}" "${output}")
endfunction()

foreach(package IN ITEMS runtime development)
    set(file "${${package}_file}")
    expect_field("${file}" Package "${${package}}")
    expect_field("${file}" Source vontalbase)
    expect_field("${file}" Version "${VERSION}")
    expect_field("${file}" Architecture "${architecture}")
    expect_field("${file}" Priority optional)
    run("${DPKG_DEB}" -f "${file}" Maintainer)
    if(NOT output MATCHES "^[^<]+ <[^@>]+@[^>]+>$")
        message(FATAL_ERROR "the maintainer of ${file} is '${output}'")
    endif()
    # A short line, and after it paragraphs of lines that begin with one space.
    run("${DPKG_DEB}" -f "${file}" Description)
    string(REPLACE "\n" ";" lines "${output}")
    list(POP_FRONT lines short)
    list(LENGTH lines count)
    if(NOT short MATCHES "^foundation library for C\\+\\+ applications" OR count LESS 4)
        message(FATAL_ERROR "the description of ${file} is\n${output}")
    endif()
    foreach(line IN LISTS short lines)
        string(LENGTH "${line}" length)
        if(length GREATER 80)
            message(FATAL_ERROR "a line of the description of ${file} is too long: ${line}")
        endif()
    endforeach()
endforeach()
foreach(file IN ITEMS "${runtime_file}" "${development_file}")
    run("${DPKG_DEB}" -c "${file}")
    string(REPLACE "\n" ";" lines "${output}")
    foreach(line IN LISTS lines)
        if(NOT line MATCHES "^(drwxr-xr-x|-rw-r--r--|lrwxrwxrwx) root/root ")
            message(FATAL_ERROR "not everyone can use this of ${file}:\n${line}")
        endif()
    endforeach()
endforeach()
expect_field("${runtime_file}" Section libs)
expect_field("${development_file}" Section libdevel)
expect_field("${development_file}" Depends "${runtime} (= ${VERSION})")

# The runtime package depends on those of all the libraries that its library needs.
run("${DPKG_DEB}" -f "${runtime_file}" Depends)
set(depends ", ${output},")
foreach(needed IN ITEMS libc6 libstdc++6 libgcc-s1 libssl3 libxml2 libxslt1.1 zlib1g)
    string(FIND "${depends}" ", ${needed} (>= " position)
    if(position LESS 0)
        message(FATAL_ERROR "the runtime package does not depend on ${needed}: ${output}")
    endif()
endforeach()

# The scripts of a library's package do nothing that a trigger does.
run("${DPKG_DEB}" -e "${runtime_file}" "${WORK}/control")
file(GLOB control RELATIVE "${WORK}/control" "${WORK}/control/*")
expect_equal("the control files of the runtime package" "control;md5sums;shlibs;triggers" "${control}")
file(READ "${WORK}/control/triggers" triggers)
expect_equal("the triggers" "activate-noawait ldconfig\n" "${triggers}")
set(wanted "${runtime} (>= ${VERSION}), ${runtime} (<< ${next_interface}~)")
file(READ "${WORK}/control/shlibs" shlibs)
expect_equal("the shlibs file" "libVontalBase ${major} ${wanted}\n" "${shlibs}")

# ---------------------------------------------------------------------------------------------------
# What is in them

run("${DPKG_DEB}" -x "${runtime_file}" "${WORK}/runtime")
expect_files("${WORK}/runtime" ""
    "usr/${LIBDIR}/libVontalBase.so.${major}" "usr/${LIBDIR}/libVontalBase.so.${VERSION}"
    "usr/share/doc/${runtime}/changelog.gz" "usr/share/doc/${runtime}/copyright")
run("${DPKG_DEB}" -x "${development_file}" "${WORK}/development")
set(package "usr/${LIBDIR}/cmake/VontalBase")
set(link "usr/${LIBDIR}/libVontalBase.so")
if(NOT IS_SYMLINK "${WORK}/development/${link}")
    message(FATAL_ERROR "the development package has no link ${link}")
endif()
file(READ_SYMLINK "${WORK}/development/${link}" target)
expect_equal("the target of ${link}" "libVontalBase.so.${major}" "${target}")
expect_files("${WORK}/development" usr/include ${link}
    "${package}/VontalBaseConfig.cmake" "${package}/VontalBaseConfigVersion.cmake"
    "${package}/VontalBaseTargets.cmake" "${package}/VontalBaseTargets-release.cmake"
    "usr/${LIBDIR}/pkgconfig/vontalbase.pc"
    "usr/share/doc/${development}/changelog.gz" "usr/share/doc/${development}/copyright")

file(READ "${SOURCE}/LICENSE" license)
foreach(copyright IN ITEMS "runtime/usr/share/doc/${runtime}" "development/usr/share/doc/${development}")
    file(READ "${WORK}/${copyright}/copyright" text)
    expect_equal("the copyright in ${copyright}" "${license}" "${text}")
    run(gzip -dc "${WORK}/${copyright}/changelog.gz")
    string(FIND "${output}" "vontalbase (${VERSION}) " position)
    expect_equal("where the changelog in ${copyright} tells of this version" 0 "${position}")
endforeach()

# ---------------------------------------------------------------------------------------------------
# What can be done with them

foreach(file IN ITEMS "${runtime_file}" "${development_file}")
    run("${DPKG_DEB}" -x "${file}" "${WORK}/both")
endforeach()
# Their files tell pkg-config the places of the system, so this one is named as another system's root.
set(ENV{PKG_CONFIG_SYSROOT_DIR} "${WORK}/both")
use_tree("${WORK}/both/usr" "${LIBDIR}")
unset(ENV{PKG_CONFIG_SYSROOT_DIR})
# In the system itself no folder may be among the flags: it would change the order in which compilers look.
set(ENV{PKG_CONFIG_LIBDIR} "${WORK}/both/usr/${LIBDIR}/pkgconfig")
run("${PKG_CONFIG}" --cflags --libs vontalbase)
unset(ENV{PKG_CONFIG_LIBDIR})
expect_equal("the flags in the system" "-lVontalBase" "${output}")

# A package of the application would depend on our runtime package alone, besides those of the compiler.
file(COPY "${WORK}/control/" DESTINATION "${WORK}/runtime/DEBIAN")
file(WRITE "${WORK}/application/debian/control" "Source: application\n\nPackage: any\nArchitecture: any\n")
run("${CMAKE_COMMAND}" -E chdir "${WORK}/application" "${DPKG_SHLIBDEPS}" -O "-S${WORK}/runtime"
    "${WORK}/usr-through-pkg-config")
string(REGEX REPLACE ".*shlibs:Depends=" "" output "${output}")
string(REGEX REPLACE "lib(c6|gcc-s1|stdc\\+\\+6) \\([^)]*\\), " "" output "${output}")
expect_equal("what the application depends on" "${wanted}" "${output}")

# ---------------------------------------------------------------------------------------------------
# A tree that is configured for another prefix is refused: its files would be where Debian has none.

file(READ "${BUILD}/CPackConfig.cmake" config)
string(REPLACE "set(CPACK_VONTALBASE_PREFIX \"/usr\")" "set(CPACK_VONTALBASE_PREFIX \"/usr/local\")" other "${config}")
if(other STREQUAL config)
    message(FATAL_ERROR "${BUILD}/CPackConfig.cmake does not tell the prefix")
endif()
file(WRITE "${WORK}/other-prefix.cmake" "${other}")
run_refused("${CPACK}" --config "${WORK}/other-prefix.cmake" -G DEB -B "${WORK}/other-prefix")
if(NOT output MATCHES "cmake -DCMAKE_INSTALL_PREFIX=/usr")
    message(FATAL_ERROR "the failure of another prefix does not say what to do:\n${output}")
endif()
file(GLOB_RECURSE packages "${WORK}/other-prefix/*.deb")
expect_equal("packages for another prefix" "" "${packages}")

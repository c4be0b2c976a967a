# Seeks the DLLs of the runtime of compilers that tell in different ways where these are. The compilers are stand-ins: a
# cross compiler tells the whole path, one on Windows the bare name, since its DLLs lie beside its programs.
#
# Needs what foreign.cmake needs.

cmake_minimum_required(VERSION 3.25)
include("${CMAKE_CURRENT_LIST_DIR}/foreign.cmake")

file(REMOVE_RECURSE "${WORK}")
set(names libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)

# Makes a compiler in the folder WHERE/bin that puts PLACE in front of the name that it is asked for, and DLLs in the
# folder DLLS.
function(make_compiler where place dlls)
    file(WRITE "${where}/bin/g++" "#!/bin/sh\necho \"${place}\${1#-print-file-name=}\"\n")
    file(CHMOD "${where}/bin/g++" PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
    foreach(name IN LISTS names)
        file(WRITE "${dlls}/${name}" "")
    endforeach()
endfunction()

function(expect_dlls where dlls)
    run("${CMAKE_COMMAND}" -S "${CMAKE_CURRENT_LIST_DIR}/runtime" -B "${where}/tree" -G Ninja
        "-DVONTALBASE_SOURCE=${SOURCE}" "-DCMAKE_CXX_COMPILER=${where}/bin/g++")
    file(READ "${where}/tree/found" found)
    list(TRANSFORM names PREPEND "${dlls}/" OUTPUT_VARIABLE expected)
    expect_equal("the DLLs of the runtime" "${expected}" "${found}")
    run("${CMAKE_COMMAND}" --build "${where}/tree")
    file(GLOB copies RELATIVE "${where}/tree/bin" "${where}/tree/bin/*")
    list(SORT copies)
    list(SORT names)
    expect_equal("what is beside the programs" "${names}" "${copies}")
endfunction()

make_compiler("${WORK}/cross" "${WORK}/cross/lib/" "${WORK}/cross/lib")
expect_dlls("${WORK}/cross" "${WORK}/cross/lib")
make_compiler("${WORK}/native" "" "${WORK}/native/bin")
expect_dlls("${WORK}/native" "${WORK}/native/bin")

make_compiler("${WORK}/lost" "" "${WORK}/elsewhere")
run_refused("${CMAKE_COMMAND}" -S "${CMAKE_CURRENT_LIST_DIR}/runtime" -B "${WORK}/lost/tree" -G Ninja
    "-DVONTALBASE_SOURCE=${SOURCE}" "-DCMAKE_CXX_COMPILER=${WORK}/lost/bin/g++")
if(NOT output MATCHES "does not know where its libstdc\\+\\+-6\\.dll is")
    message(FATAL_ERROR "the failure does not say which DLL is missing:\n${output}")
endif()

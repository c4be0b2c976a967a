# C++ objects and exceptions cross the border of the DLL, so program and DLL share one C++ runtime: the
# compiler's own DLLs, copied beside the programs and shipped with the library.

option(VONTALBASE_INSTALL_RUNTIME "Install the compiler's runtime DLLs beside the library" ON)

set(vontalbase_runtime_dlls)
set(copied)
foreach(name IN ITEMS libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
    execute_process(
        COMMAND "${CMAKE_CXX_COMPILER}" -print-file-name=${name}
        OUTPUT_VARIABLE dll OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    if(NOT IS_ABSOLUTE "${dll}")
        # A compiler on Windows itself has its DLLs beside its programs, and tells only the name.
        get_filename_component(compiler_folder "${CMAKE_CXX_COMPILER}" DIRECTORY)
        set(dll "${compiler_folder}/${name}")
    endif()
    file(REAL_PATH "${dll}" dll)
    if(NOT EXISTS "${dll}")
        message(FATAL_ERROR "The compiler does not know where its ${name} is.")
    endif()
    list(APPEND vontalbase_runtime_dlls "${dll}")
    set(copy "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${name}")
    add_custom_command(OUTPUT "${copy}"
        COMMAND "${CMAKE_COMMAND}" -E copy "${dll}" "${copy}"
        DEPENDS "${dll}"
        COMMENT "Copying ${name}" VERBATIM)
    list(APPEND copied "${copy}")
endforeach()
add_custom_target(VontalBaseRuntime ALL DEPENDS ${copied})
add_dependencies(VontalBase VontalBaseRuntime)

# How everything of ours is compiled. Foreign code (GoogleTest) gets the sanitizers, since a program is
# instrumented whole or not at all, but neither our warnings nor our language settings.

if(NOT CMAKE_CXX_COMPILER_ID MATCHES "^(GNU|Clang)$" OR (WIN32 AND NOT MINGW))
    message(FATAL_ERROR "VontalBase is built with g++ or clang++; for Windows with mingw-w64.")
endif()

find_package(Threads REQUIRED)
if(WIN32 AND NOT DEFINED ZLIB_USE_STATIC_LIBS)
    # One DLL less to ship.
    set(ZLIB_USE_STATIC_LIBS ON)
endif()
find_package(ZLIB 1.2.11 REQUIRED)
if(NOT WIN32)
    find_package(OpenSSL 3.0 REQUIRED COMPONENTS Crypto)
    find_package(LibXml2 2.9 REQUIRED)
    find_package(LibXslt 1.1 REQUIRED)
endif()

# All programs in one folder. On Windows the DLLs are there too, for a program finds them beside itself.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")

if(VONTALBASE_SANITIZERS)
    list(JOIN VONTALBASE_SANITIZERS "," vontalbase_sanitizers)
    add_compile_options(-fsanitize=${vontalbase_sanitizers} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${vontalbase_sanitizers})
    if("undefined" IN_LIST VONTALBASE_SANITIZERS)
        # A container of a JSON tree is handed out without a test of its type, as callers expect; the pointer is
        # then one to a base class that the node does not have, of which nothing but the common base is used.
        add_compile_options(-fno-sanitize=vptr)
    endif()
endif()
if(VONTALBASE_BUILD_FUZZERS)
    if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
        message(FATAL_ERROR "VONTALBASE_BUILD_FUZZERS needs clang: libFuzzer comes with it alone.")
    endif()
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()
if(VONTALBASE_COVERAGE)
    # Counters are atomic because tests run threads, and files are written by several programs at once.
    add_compile_options(--coverage -fprofile-update=atomic)
    add_link_options(--coverage)
endif()

# Language, warnings and system switches of one target of ours.
function(vontalbase_apply_settings target)
    target_compile_features(${target} PUBLIC cxx_std_20)
    set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
    if(WIN32)
        target_compile_definitions(${target} PRIVATE _WIN32_WINNT=0x0A00 NOMINMAX WIN32_LEAN_AND_MEAN)
    endif()
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
    # A fused multiplication would change the last bits of the numbers that string2double reads.
    target_compile_options(${target} PRIVATE -ffp-contract=off)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        # Sees overlapping copies in the standard library's own operator+ of strings, where there are none.
        target_compile_options(${target} PRIVATE -Wno-restrict)
    endif()
    if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
        # clang counts changes of sign among the conversions, g++ does not; one rule for both.
        target_compile_options(${target} PRIVATE -Wno-sign-conversion)
    endif()
    if(VONTALBASE_WARNINGS_AS_ERRORS)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
endfunction()

# What is not shipped is compiled quickly rather than well.
function(vontalbase_compile_quickly target)
    target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:-O1>)
endfunction()

# What the shared library and its twin for the tests have in common.
function(vontalbase_set_up_library target)
    target_include_directories(${target} PUBLIC
        "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>"
        "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>")
    set_target_properties(${target} PROPERTIES
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON)
    target_link_libraries(${target} PRIVATE Threads::Threads ZLIB::ZLIB)
    if(NOT WIN32)
        # One thread-local pointer is read for each node of a tree that is taken apart: a load, not a call. And
        # calls of the C library go straight to it.
        target_compile_options(${target} PRIVATE -ftls-model=initial-exec -fno-plt)
        # A library with unique symbols is never unloaded.
        if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
            target_compile_options(${target} PRIVATE -fno-gnu-unique)
        endif()
    endif()
    # Libraries of the system that the platform halves call. They are the library's own affair: an application
    # needs neither their headers nor their names.
    if(WIN32)
        target_link_libraries(${target} PRIVATE crypt32 ole32 oleaut32)
    else()
        target_link_libraries(${target} PRIVATE OpenSSL::Crypto LibXml2::LibXml2 LibXslt::LibXslt)
    endif()
endfunction()

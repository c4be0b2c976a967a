# cmake -DPROGRAM=... -DEXPECTED=... -DFOLDER=... -P check_program.cmake
#
# Runs a program in a fresh folder. Fails unless it ends with 0 and prints exactly what the file EXPECTED has; the
# two forms of line ends count as one.

cmake_minimum_required(VERSION 3.25)

list(REMOVE_ITEM PROGRAM "")
file(REMOVE_RECURSE "${FOLDER}")
file(MAKE_DIRECTORY "${FOLDER}")
execute_process(COMMAND ${PROGRAM}
    WORKING_DIRECTORY "${FOLDER}"
    RESULT_VARIABLE result
    OUTPUT_FILE "${FOLDER}.output"
    ERROR_VARIABLE errors)

# As hexadecimal digits, since a text loses some characters on its way through CMake.
file(READ "${FOLDER}.output" printed HEX)
file(READ "${EXPECTED}" expected HEX)
string(REGEX REPLACE "(..)" "\\1 " printed "${printed}")
string(REGEX REPLACE "(..)" "\\1 " expected "${expected}")
string(REPLACE "0d 0a " "0a " printed "${printed}")
string(REPLACE "0d 0a " "0a " expected "${expected}")

if(NOT result STREQUAL "0" OR NOT printed STREQUAL expected)
    file(READ "${FOLDER}.output" text)
    file(READ "${EXPECTED}" expected_text)
    message("--- expected:\n${expected_text}\n--- printed:\n${text}\n--- standard error stream:\n${errors}")
    message(FATAL_ERROR "the program ended with ${result}, and its output must be as expected")
endif()
file(REMOVE_RECURSE "${FOLDER}")

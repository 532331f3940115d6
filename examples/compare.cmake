# SPDX-License-Identifier: MIT

# cmake -DPROGRAM=<program> -DEXPECTED=<file> -P compare.cmake
# Runs the program and compares what it prints with the file.

execute_process(COMMAND "${PROGRAM}" OUTPUT_VARIABLE printed COMMAND_ERROR_IS_FATAL ANY)
file(READ "${EXPECTED}" expected)
if(NOT printed STREQUAL expected)
  message(FATAL_ERROR "${EXPECTED} says\n${expected}\nbut the program printed\n${printed}")
endif()

# SPDX-License-Identifier: MIT

# cmake -DWORK=<folder> -DCXX=<compiler> -P check.cmake
# Configures the project, and fails where something of the tree would be installed with it.

file(REMOVE_RECURSE "${WORK}")
execute_process(COMMAND "${CMAKE_COMMAND}" -G Ninja -S "${CMAKE_CURRENT_LIST_DIR}" -B "${WORK}/build"
  "-DCMAKE_CXX_COMPILER=${CXX}" COMMAND_ERROR_IS_FATAL ANY)
file(READ "${WORK}/build/ztstyles/cmake_install.cmake" script)
if(script MATCHES "file\\(INSTALL")
  message(FATAL_ERROR "the tree would install itself:\n${script}")
endif()

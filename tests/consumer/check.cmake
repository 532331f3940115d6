# SPDX-License-Identifier: MIT

# cmake -DBUILD=<build tree> -DWORK=<folder> -DUSE_PKG_CONFIG=<bool> -DCXX=<compiler> -P check.cmake
# Installs the build tree to a prefix of its own, then configures, builds and runs the consumer against it.

function(run)
  execute_process(COMMAND ${ARGV} COMMAND_ECHO STDOUT COMMAND_ERROR_IS_FATAL ANY)
endfunction()

file(REMOVE_RECURSE "${WORK}")
run("${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${WORK}/prefix")

file(GLOB_RECURSE pc "${WORK}/prefix/*/ztstyles.pc")
cmake_path(GET pc PARENT_PATH pc_directory)
set(ENV{PKG_CONFIG_PATH} "${pc_directory}")
cmake_path(GET pc_directory PARENT_PATH library_directory)
set(ENV{LD_LIBRARY_PATH} "${library_directory}:$ENV{LD_LIBRARY_PATH}")

run("${CMAKE_COMMAND}" -G Ninja -S "${CMAKE_CURRENT_LIST_DIR}" -B "${WORK}/build"
  "-DCMAKE_PREFIX_PATH=${WORK}/prefix" "-DCMAKE_CXX_COMPILER=${CXX}" "-DCMAKE_BUILD_TYPE=Debug"
  "-DUSE_PKG_CONFIG=${USE_PKG_CONFIG}")
run("${CMAKE_COMMAND}" --build "${WORK}/build")
run("${CMAKE_CTEST_COMMAND}" --test-dir "${WORK}/build" --output-on-failure --no-tests=error)

# The installed tool finds the installed library without being told where it is.
unset(ENV{LD_LIBRARY_PATH})
if(EXISTS "${WORK}/prefix/bin/ztstyles")
  run("${WORK}/prefix/bin/ztstyles" --version)
endif()

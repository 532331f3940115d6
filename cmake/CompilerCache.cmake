# SPDX-License-Identifier: MIT

# Compile through ccache where it is installed. A clone elsewhere, or a second work tree, finds the same results: paths
# below the source folder are made relative before they are compared.

find_program(ZT_CCACHE ccache)
if(ZT_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER
    "${CMAKE_COMMAND}" -E env "CCACHE_BASEDIR=${PROJECT_SOURCE_DIR}" CCACHE_NOHASHDIR=1
    "CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime" "${ZT_CCACHE}")
endif()

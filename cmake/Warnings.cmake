# SPDX-License-Identifier: MIT

# zt_build_flags: what every target of the tree is compiled with, and nobody who uses the library.

add_library(zt_build_flags INTERFACE)

target_compile_options(zt_build_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Woverloaded-virtual -Wnon-virtual-dtor)
if(ZT_WARNINGS_AS_ERRORS)
  target_compile_options(zt_build_flags INTERFACE -Werror)
endif()

# Designated initialisers that name some fields leave the others to their defaults: that is what they are for.
target_compile_options(zt_build_flags INTERFACE -Wno-missing-field-initializers)

# A call inside the shared library goes straight to its function, as it does in a program that links the floors.
target_compile_options(zt_build_flags INTERFACE -fno-semantic-interposition)

# __FILE__ names the file as it stands in the tree, wherever that was cloned.
target_compile_options(zt_build_flags INTERFACE "-fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=")

# SPDX-License-Identifier: MIT

# Sanitizers and coverage apply to everything that is compiled, tests included.

if(ZT_SANITIZE)
  string(REPLACE ";" "," sanitizers "${ZT_SANITIZE}")
  add_compile_options(-fsanitize=${sanitizers} -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${sanitizers})
  if("undefined" IN_LIST ZT_SANITIZE)
    add_compile_options(-fno-sanitize-recover=undefined)
  endif()
endif()

if(ZT_COVERAGE)
  add_compile_options(--coverage -fprofile-abs-path)
  add_link_options(--coverage)
endif()

if(ZT_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    message(FATAL_ERROR "ZT_FUZZ needs clang++ (preset fuzz)")
  endif()
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

set(ZT_TEST_ENVIRONMENT
  "ASAN_OPTIONS=detect_stack_use_after_return=1:strict_string_checks=1:check_initialization_order=1"
  "UBSAN_OPTIONS=print_stacktrace=1"
  "TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1"
  "LC_ALL=C.UTF-8")

# SPDX-License-Identifier: MIT

# The floors of the house: one object library each, seeing its own headers and those of the floors that it may use.
#
# A floor's headers are reached as <platform/NSObject.h>, so the folder that *holds* `platform/` has to be on the include
# path. That would be the source folder, which holds all floors. Each floor therefore gets an include root of its own in
# the build folder, with one link in it, and a target sees exactly the roots of the floors it links: an include that
# reaches upward does not compile.

set(ZT_FLOORS platform support archiving ztstyles inspection)
set(ZT_FLOOR_DIRECTORY_platform platform)
set(ZT_FLOOR_DIRECTORY_support support)
set(ZT_FLOOR_DIRECTORY_archiving archiving)
set(ZT_FLOOR_DIRECTORY_ztstyles src/ztstyles)
set(ZT_FLOOR_DIRECTORY_inspection inspection)

# The floors of the application, which use the library as everybody does, through what it exports.
set(ZT_APPLICATION_FLOORS document insight opendocument wordprocessing tool)
foreach(floor IN LISTS ZT_APPLICATION_FLOORS)
  set(ZT_FLOOR_DIRECTORY_${floor} ${floor})
endforeach()

# zt_include_root(<variable> <name> <directory>): makes the root under which <directory> is seen as <name>/.
function(zt_include_root variable name directory)
  set(root "${PROJECT_BINARY_DIR}/include-roots/${name}")
  file(MAKE_DIRECTORY "${root}")
  file(CREATE_LINK "${PROJECT_SOURCE_DIR}/${directory}" "${root}/${name}" SYMBOLIC)
  set(${variable} "${root}" PARENT_SCOPE)
endfunction()

# zt_sources(<variable> <directory>): all .cpp files below <directory>, or one empty file where there are none yet.
function(zt_sources variable directory)
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/${directory}/*.cpp")
  if(NOT sources)
    string(MAKE_C_IDENTIFIER "${directory}" identifier)
    set(sources "${PROJECT_BINARY_DIR}/empty/${identifier}.cpp")
    if(NOT EXISTS "${sources}")
      file(WRITE "${sources}" "// ${directory}/ has no sources.\n")
    endif()
  endif()
  set(${variable} "${sources}" PARENT_SCOPE)
endfunction()

# zt_add_floor(<name> USES <floors> LIBRARIES <libraries> PUBLIC_LIBRARIES <libraries>): makes zt_<name>.
function(zt_add_floor name)
  cmake_parse_arguments(PARSE_ARGV 1 floor "" "" "USES;LIBRARIES;PUBLIC_LIBRARIES")
  set(directory "${ZT_FLOOR_DIRECTORY_${name}}")
  zt_sources(sources "${directory}")
  list(FILTER sources EXCLUDE REGEX "/main\\.cpp$")
  zt_include_root(root "${name}" "${directory}")

  add_library(zt_${name} OBJECT ${sources})
  target_include_directories(zt_${name} PUBLIC "${root}")
  foreach(used IN LISTS floor_USES)
    target_link_libraries(zt_${name} PUBLIC zt_${used})
  endforeach()
  target_link_libraries(zt_${name} PUBLIC ${floor_PUBLIC_LIBRARIES} PRIVATE ${floor_LIBRARIES} zt_build_flags)
  target_compile_definitions(zt_${name} PRIVATE ZT_BUILDS_LIBRARY)
  # One set of objects serves the shared library and the programs that link the floors directly.
  set_target_properties(zt_${name} PROPERTIES
    POSITION_INDEPENDENT_CODE ON
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON)
endfunction()

# zt_link_floors(<target> <floor>): links <target> with the objects of <floor> and of all floors below it.
# The objects of an object library reach only those who name it, so every floor is named.
function(zt_link_floors target highest)
  foreach(floor IN LISTS ZT_FLOORS)
    target_link_libraries(${target} PRIVATE zt_${floor})
    if(floor STREQUAL "${highest}")
      break()
    endif()
  endforeach()
endfunction()

# zt_link_application(<target> <floors>): links <target> with the objects of these floors of the application, and with
# the library.
function(zt_link_application target)
  foreach(floor IN LISTS ARGN)
    target_link_libraries(${target} PRIVATE zt_${floor})
  endforeach()
  target_link_libraries(${target} PRIVATE ZTStyles)
endfunction()

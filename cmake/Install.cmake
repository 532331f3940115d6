# SPDX-License-Identifier: MIT

# Installing: the library, its headers, the tool, a CMake package and a pkg-config file.

include(CMakePackageConfigHelpers)

set(headers "${CMAKE_INSTALL_INCLUDEDIR}/ztstyles-${PROJECT_VERSION_MAJOR}")
set(package "${CMAKE_INSTALL_LIBDIR}/cmake/ZTStyles")

install(TARGETS ZTStyles EXPORT ZTStylesTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT runtime NAMELINK_COMPONENT development
  ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT development)
if(TARGET ztstyles)
  # The tool finds the library beside itself, wherever the two were put.
  file(RELATIVE_PATH library_from_tool "/${CMAKE_INSTALL_BINDIR}" "/${CMAKE_INSTALL_LIBDIR}")
  set_target_properties(ztstyles PROPERTIES INSTALL_RPATH "$ORIGIN/${library_from_tool}")
  install(TARGETS ztstyles RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT tool)
endif()

# The headers at a floor's door; what lies in its rooms is its own business.
foreach(floor IN LISTS ZT_FLOORS)
  install(DIRECTORY "${PROJECT_SOURCE_DIR}/${ZT_FLOOR_DIRECTORY_${floor}}/" DESTINATION "${headers}/${floor}"
    COMPONENT development FILES_MATCHING PATTERN "*.h" PATTERN "*Internal.h" EXCLUDE
    REGEX "/ztstyles/[a-z]+$" EXCLUDE)
endforeach()

install(EXPORT ZTStylesTargets NAMESPACE ZTStyles:: DESTINATION "${package}" COMPONENT development)
configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/ZTStylesConfig.cmake.in"
  "${PROJECT_BINARY_DIR}/ZTStylesConfig.cmake" INSTALL_DESTINATION "${package}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/ZTStylesConfigVersion.cmake" COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/ZTStylesConfig.cmake" "${PROJECT_BINARY_DIR}/ZTStylesConfigVersion.cmake"
  DESTINATION "${package}" COMPONENT development)

# Whoever links the static library links libxml2 too; the shared one brings it along.
if(BUILD_SHARED_LIBS)
  set(requires_private_key "Requires.private")
else()
  set(requires_private_key "Requires")
endif()
file(RELATIVE_PATH prefix_from_pc "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
string(REGEX REPLACE "/$" "" prefix_from_pc "${prefix_from_pc}")
configure_file("${PROJECT_SOURCE_DIR}/cmake/ztstyles.pc.in" "${PROJECT_BINARY_DIR}/ztstyles.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/ztstyles.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig"
  COMPONENT development)

# Installs the library, its headers, a CMake package (palvet::palvet) and a
# pkg-config file. Internal headers (*_internal.h) are not installed.
include(CMakePackageConfigHelpers)

set(_palvet_targets palvet)
if(PALVET_BUILD_STATIC)
  list(APPEND _palvet_targets palvet_static)
endif()

# Components match the Debian packages: runtime (the versioned shared
# library), dev (headers, link name, static library, CMake and pkg-config
# files) and tools (the command-line tool).
install(TARGETS ${_palvet_targets} EXPORT palvetTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT dev
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/palvet/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/palvet COMPONENT dev
  FILES_MATCHING PATTERN "*.h" PATTERN "*_internal.h" EXCLUDE)

set(_palvet_cmakedir ${CMAKE_INSTALL_LIBDIR}/cmake/palvet)
install(EXPORT palvetTargets NAMESPACE palvet:: DESTINATION ${_palvet_cmakedir} COMPONENT dev)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/palvetConfig.cmake.in
  ${PROJECT_BINARY_DIR}/palvetConfig.cmake INSTALL_DESTINATION ${_palvet_cmakedir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/palvetConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/palvetConfig.cmake ${PROJECT_BINARY_DIR}/palvetConfigVersion.cmake
  DESTINATION ${_palvet_cmakedir} COMPONENT dev)

# The .pc file finds its prefix relative to itself, so an installed tree can be
# moved (and installed with --prefix) without rewriting it.
file(RELATIVE_PATH PALVET_PC_PREFIX_FROM_PCDIR /p/${CMAKE_INSTALL_LIBDIR}/pkgconfig /p)
configure_file(${PROJECT_SOURCE_DIR}/cmake/palvet.pc.in ${PROJECT_BINARY_DIR}/palvet.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/palvet.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)

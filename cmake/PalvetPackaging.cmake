# Debian packages through CPack, one per install component:
#   libpalvet<major>  the shared library (package name follows the SONAME)
#   libpalvet-dev     headers, link name, static library, CMake and pkg-config files
#   palvet-tools      the palvet command-line tool
# scripts/package configures a build for /usr and runs cpack on it.
set(PALVET_SOVERSION ${PROJECT_VERSION_MAJOR})
set(_palvet_runtime_pkg libpalvet${PALVET_SOVERSION})

# Every package carries its copyright file and a compressed changelog, as
# Debian policy asks.
set(_palvet_docdir ${PROJECT_BINARY_DIR}/debian-doc)
file(MAKE_DIRECTORY ${_palvet_docdir})
add_custom_command(OUTPUT ${_palvet_docdir}/changelog.Debian.gz
  COMMAND gzip -n -9 -c ${PROJECT_SOURCE_DIR}/cmake/debian/changelog > ${_palvet_docdir}/changelog.Debian.gz
  DEPENDS ${PROJECT_SOURCE_DIR}/cmake/debian/changelog)
add_custom_target(palvet_debian_doc ALL DEPENDS ${_palvet_docdir}/changelog.Debian.gz)
foreach(pair "runtime:${_palvet_runtime_pkg}" "dev:libpalvet-dev" "tools:palvet-tools")
  string(REPLACE ":" ";" pair "${pair}")
  list(GET pair 0 component)
  list(GET pair 1 package)
  install(FILES ${PROJECT_SOURCE_DIR}/cmake/debian/copyright ${_palvet_docdir}/changelog.Debian.gz
    DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${package} COMPONENT ${component} EXCLUDE_FROM_ALL)
endforeach()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME palvet)
set(CPACK_PACKAGE_VENDOR "palvet developers")
set(CPACK_PACKAGE_CONTACT "palvet developers <palvet-dev@lists.palvet.invalid>")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL runtime dev tools)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "https://palvet.invalid/")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
# The tool links the library built here, which no installed package holds yet.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
if(CMAKE_CROSSCOMPILING)
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE armhf)
endif()

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${_palvet_runtime_pkg})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_MULTIARCH same)
# ldconfig runs through the dpkg trigger rather than maintainer scripts.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/debian/triggers)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "palvet base library for embedded media device applications
 One shared library with a flat interface of free functions and a few
 classes: debug log and clocks, byte buffers and strings, pointer
 collections, checksums and hash tables, threads and events, character-set
 conversion, files, folders and processes, and imaging.")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME libpalvet-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_MULTIARCH same)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "${_palvet_runtime_pkg} (= ${PROJECT_VERSION}-1)")
set(CPACK_DEBIAN_DEV_PACKAGE_SHLIBDEPS OFF)
set(CPACK_COMPONENT_DEV_DESCRIPTION "palvet base library: development files
 Headers, the link name, the static library, and the CMake package and
 pkg-config files for building applications against palvet.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME palvet-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${_palvet_runtime_pkg} (= ${PROJECT_VERSION}-1)")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION "palvet command-line tool
 The palvet library's jobs from a shell: BMP and raw frame conversion,
 character-set conversion, checksums, hex and URL text, folder listing,
 copying with progress, configuration text and process lookup.")

include(CPack)

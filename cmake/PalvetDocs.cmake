# The API reference: Doxygen over the public headers (target "docs"). The
# build fails on any warning, so every public declaration keeps its contract.
find_package(Doxygen QUIET)
if(DOXYGEN_FOUND)
  set(PALVET_DOCS_DIR ${PROJECT_BINARY_DIR}/docs)
  configure_file(${PROJECT_SOURCE_DIR}/docs/Doxyfile.in ${PALVET_DOCS_DIR}/Doxyfile @ONLY)
  add_custom_target(docs
    COMMAND ${CMAKE_COMMAND} -E rm -rf ${PALVET_DOCS_DIR}/html
    COMMAND Doxygen::doxygen ${PALVET_DOCS_DIR}/Doxyfile
    WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
    COMMENT "API reference: ${PALVET_DOCS_DIR}/html/index.html"
    VERBATIM)
endif()

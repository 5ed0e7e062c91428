# `docs` target: the HTML reference of the installed headers, by Doxygen with
# Graphviz, in <build>/reference/html. Every Doxygen warning fails the target.
find_package(Doxygen COMPONENTS dot)
if(DOXYGEN_FOUND)
  set(KYBASE_DOC_DIR ${PROJECT_BINARY_DIR}/reference)
  set(KYBASE_DOC_GROUPS ${KYBASE_DOC_DIR}/groups.dox)
  string(REPLACE ";" " " KYBASE_DOC_INPUT
    "${PROJECT_SOURCE_DIR}/docs/reference/mainpage.md ${KYBASE_HEADERS} ${KYBASE_DOC_GROUPS}")
  configure_file(${PROJECT_SOURCE_DIR}/docs/reference/Doxyfile.in ${KYBASE_DOC_DIR}/Doxyfile @ONLY)
  add_custom_target(docs
    COMMAND ${CMAKE_COMMAND} "-DHEADERS=${KYBASE_HEADERS}" -DOUTPUT=${KYBASE_DOC_GROUPS}
            -P ${PROJECT_SOURCE_DIR}/docs/reference/groups.cmake
    COMMAND ${CMAKE_COMMAND} -E remove_directory ${KYBASE_DOC_DIR}/html
    COMMAND Doxygen::doxygen ${KYBASE_DOC_DIR}/Doxyfile
    COMMAND ${CMAKE_COMMAND} -E echo "reference: ${KYBASE_DOC_DIR}/html/index.html"
    WORKING_DIRECTORY ${KYBASE_DOC_DIR}
    COMMENT "Doxygen reference of the public headers"
    VERBATIM)
endif()

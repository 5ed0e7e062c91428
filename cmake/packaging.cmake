# Debian packages by CPack (`make package`): libkybase<SOVERSION> carries the shared
# library and the tools, libkybase-dev the headers, link name, CMake package,
# pkg-config file and manual pages. Both take their files from the runtime and dev
# install components.
set(KYBASE_DEB_RUNTIME libkybase${PROJECT_VERSION_MAJOR})
set(KYBASE_DEB_MAINTAINER "kybase developers <kybase@example.org>")

# Each package carries its copyright and a changelog compressed the way Debian asks
# (best compression, no name or time stamp, so the package builds the same twice).
find_program(KYBASE_GZIP gzip REQUIRED)
set(KYBASE_DEB_DOC ${PROJECT_BINARY_DIR}/debian)
file(MAKE_DIRECTORY ${KYBASE_DEB_DOC})
execute_process(COMMAND ${KYBASE_GZIP} -9nc ${PROJECT_SOURCE_DIR}/cmake/debian/changelog
                OUTPUT_FILE ${KYBASE_DEB_DOC}/changelog.gz COMMAND_ERROR_IS_FATAL ANY)
foreach(component runtime dev)
  if(component STREQUAL runtime)
    set(package ${KYBASE_DEB_RUNTIME})
  else()
    set(package libkybase-dev)
  endif()
  install(FILES ${PROJECT_SOURCE_DIR}/cmake/debian/copyright ${KYBASE_DEB_DOC}/changelog.gz
          DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${package} COMPONENT ${component})
endforeach()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME kybase)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT ${KYBASE_DEB_MAINTAINER})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime dev)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${KYBASE_DEB_RUNTIME})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
# dpkg-shlibdeps finds libc, libstdc++ and zlib1g from what the files link.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
# The library's folder changes, so ldconfig runs once at the end of dpkg's work.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/debian/triggers)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
"general-purpose C++ base class library
kybase is a C++17 base class library: a small-cell memory manager and pools,
untyped containers, strings and number text, locales, a calendar, path names,
an XML reader and writer, a URL input stream that inflates gzip and zip data,
and a loader of modules described by descriptor files.

This package holds the shared library and the command-line tools built on it.")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME libkybase-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "${KYBASE_DEB_RUNTIME} (= ${PROJECT_VERSION}), zlib1g-dev")
set(CPACK_COMPONENT_DEV_DESCRIPTION
"general-purpose C++ base class library (development files)
kybase is a C++17 base class library: a small-cell memory manager and pools,
untyped containers, strings and number text, locales, a calendar, path names,
an XML reader and writer, a URL input stream that inflates gzip and zip data,
and a loader of modules described by descriptor files.

This package holds the headers, the CMake package (find_package(kybase)), the
pkg-config file and the manual pages of the tools.")

include(CPack)

# The check of the packages with this tree's settings: the package_deb test and
# `make package` run it (cmake -P <build>/debian/check.cmake).
find_program(KYBASE_LINTIAN lintian)
file(CONFIGURE OUTPUT ${KYBASE_DEB_DOC}/check.cmake @ONLY CONTENT [=[
set(CPACK "@CMAKE_CPACK_COMMAND@")
set(LINTIAN "@KYBASE_LINTIAN@")
set(BUILD_DIR "@PROJECT_BINARY_DIR@")
set(SOURCE_DIR "@PROJECT_SOURCE_DIR@/tests/package/consumer")
set(WORK_DIR "@KYBASE_DEB_DOC@/check")
set(GENERATOR "@CMAKE_GENERATOR@")
set(VERSION "@PROJECT_VERSION@")
set(MAJOR "@PROJECT_VERSION_MAJOR@")
include("@PROJECT_SOURCE_DIR@/tests/package/run_deb.cmake")
]=])

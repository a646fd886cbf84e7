# Debian packages made by CPack's DEB generator (cpack -G DEB in a build
# configured with -DCMAKE_INSTALL_PREFIX=/usr, as the "packages" presets do):
#   libzumstreams1     the two shared libraries
#   libzumstreams-dev  headers, link names, CMake package, pkg-config file,
#                      the HTML reference and the examples
#   zumcat             the tool and its manual page
# Dependencies on other packages are computed by dpkg-shlibdeps. The
# Multi-Arch fields are added by scripts/package, which also drops the
# ldconfig calls CPack writes into the library package's maintainer scripts
# (the ldconfig trigger does that work).
set(ZUM_DEB_MAINTAINER "The ZUMStreams developers <zumstreams@localhost.invalid>")

# Each package's copyright file and changelog, as Debian keeps them.
set(ZUM_DEB_CHANGELOG ${CMAKE_CURRENT_BINARY_DIR}/debian/changelog)
configure_file(${CMAKE_CURRENT_LIST_DIR}/debian/changelog.in ${ZUM_DEB_CHANGELOG} @ONLY)
find_program(ZUM_GZIP gzip REQUIRED)
add_custom_command(OUTPUT ${ZUM_DEB_CHANGELOG}.gz
  COMMAND ${ZUM_GZIP} -9nkf ${ZUM_DEB_CHANGELOG}
  DEPENDS ${ZUM_DEB_CHANGELOG} VERBATIM)
add_custom_target(deb-changelog ALL DEPENDS ${ZUM_DEB_CHANGELOG}.gz)
foreach(pair runtime:libzumstreams1 development:libzumstreams-dev tool:zumcat)
  string(REPLACE ":" ";" pair ${pair})
  list(GET pair 0 component)
  list(GET pair 1 package)
  install(FILES ${CMAKE_CURRENT_LIST_DIR}/debian/copyright ${ZUM_DEB_CHANGELOG}.gz
    DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${package} COMPONENT ${component})
endforeach()
install(DIRECTORY examples/ DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/libzumstreams-dev/examples
  COMPONENT development FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME zumstreams)
set(CPACK_PACKAGE_VENDOR "The ZUMStreams developers")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT ${ZUM_DEB_MAINTAINER})
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_COMPONENTS_ALL runtime development tool)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
if(CMAKE_SIZEOF_VOID_P EQUAL 4 AND CMAKE_LIBRARY_ARCHITECTURE STREQUAL "i386-linux-gnu")
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE i386)  # a 32-bit x86 build on an amd64 machine
endif()
set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${ZUM_DEB_MAINTAINER})
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# dpkg-shlibdeps finds the package's own libraries in the build tree.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_CURRENT_BINARY_DIR} ${CMAKE_CURRENT_BINARY_DIR}/core)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libzumstreams1)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
# dpkg runs ldconfig through its trigger once the libraries are unpacked.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_LIST_DIR}/debian/triggers)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)  # only the runtime package has libraries
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "ZUM Streams byte stream library
libZUMStreamsDLL.so gives C++ programs one abstract input stream and one
abstract output stream, endpoints over memory and files, and filters that
buffer (with push-back and CR LF lines), frame (fixed-length blocks, the
HTTP/1.1 chunked transfer coding) and encode (Base64, gzip, XML escaping).
.
This package holds the stream library and its core layer libRVKCore.so.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libzumstreams-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS runtime)
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "ZUM Streams byte stream library (development files)
libZUMStreamsDLL.so gives C++ programs one abstract input stream and one
abstract output stream, endpoints over memory and files, and filters that
buffer, frame (the HTTP/1.1 chunked transfer coding) and encode (Base64,
gzip, XML escaping).
.
This package holds the headers, the CMake package (find_package(ZUMStreams)),
the pkg-config file (zumstreams), the HTML reference and the examples.")

set(CPACK_DEBIAN_TOOL_PACKAGE_NAME zumcat)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION utils)
set(CPACK_COMPONENT_TOOL_DEPENDS runtime)
set(CPACK_COMPONENT_TOOL_DESCRIPTION "read files through chains of ZUM Streams
zumcat reads a file or standard input through a chain of the ZUM Streams
library and writes to standard output: it decodes raw HTTP/1.1 messages
(chunked transfer coding, gzip bodies, trailers), compresses and decompresses
gzip, writes and reads the chunked coding and Base64, and escapes XML.")

include(CPack)

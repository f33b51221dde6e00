# Install rules and packaging: what `cmake --install` puts under a prefix
# and what `cpack -G DEB` puts into the Debian package.
#
#   lib/liblumxml.so.1.x.y (SONAME liblumxml.so.1) and the liblumxml.so link
#   include/lumxml.h
#   lib/cmake/lumxml/      lumxmlConfig.cmake, lumxmlConfigVersion.cmake and
#                          the exported target lumxml::lumxml
#   lib/pkgconfig/lumxml.pc
#   bin/lumxml-host        the demo host
#   share/doc/lumxml/      the API reference, the demo host's manual, examples
#
# Every installed file that names a place does so relative to where it was
# installed, so one tree can be moved or installed under any prefix.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(LUMXML_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/lumxml)

install(TARGETS lumxml EXPORT lumxmlTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES ${PROJECT_SOURCE_DIR}/include/lumxml.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

install(EXPORT lumxmlTargets NAMESPACE lumxml:: DESTINATION ${LUMXML_CMAKE_DIR})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/lumxmlConfig.cmake.in
                              ${PROJECT_BINARY_DIR}/lumxmlConfig.cmake
                              INSTALL_DESTINATION ${LUMXML_CMAKE_DIR})
# find_package(lumxml 1) accepts any 1.x at least as new as asked for.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/lumxmlConfigVersion.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/lumxmlConfig.cmake
              ${PROJECT_BINARY_DIR}/lumxmlConfigVersion.cmake
        DESTINATION ${LUMXML_CMAKE_DIR})

# pkg-config: the prefix is found from the .pc file's own place.
file(RELATIVE_PATH LUMXML_PC_TO_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
string(REGEX REPLACE "/$" "" LUMXML_PC_TO_PREFIX "${LUMXML_PC_TO_PREFIX}")
configure_file(${PROJECT_SOURCE_DIR}/cmake/lumxml.pc.in ${PROJECT_BINARY_DIR}/lumxml.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/lumxml.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# The demo host finds the installed library beside it (../lib) by its SONAME.
if(NOT WIN32)
  file(RELATIVE_PATH LUMXML_BIN_TO_LIB /prefix/${CMAKE_INSTALL_BINDIR} /prefix/${CMAKE_INSTALL_LIBDIR})
  set_target_properties(lumxml-host PROPERTIES INSTALL_RPATH "$ORIGIN/${LUMXML_BIN_TO_LIB}")
endif()
install(TARGETS lumxml-host RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES ${PROJECT_SOURCE_DIR}/docs/api.md ${PROJECT_SOURCE_DIR}/docs/lumxml-host.md
              ${PROJECT_SOURCE_DIR}/README.md
        DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples/ DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples)

# ---- Debian package ---------------------------------------------------------

set(CPACK_PACKAGE_NAME lumxml)
set(CPACK_PACKAGE_VENDOR "lumxml")
set(CPACK_PACKAGE_CONTACT "lumxml maintainers <lumxml@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "XML facilities for a host language runtime")
set(CPACK_PACKAGE_DESCRIPTION
    "A C library of 26 exports that gives a host language runtime DOM documents,
a pull-style SAX reader and an incremental SAX writer, with its header, CMake
package, pkg-config file, API reference and the demo host lumxml-host.")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "https://localhost/lumxml")
# The XML engine and the converters of Debian 12; dpkg-shlibdeps adds the C
# and C++ runtimes (and repeats these two) when it is at hand.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libxerces-c3.2 (>= 3.2.4), libicu72 (>= 72.1)")
find_program(LUMXML_DPKG_SHLIBDEPS dpkg-shlibdeps)
if(LUMXML_DPKG_SHLIBDEPS)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
endif()
# A shlibs file and the ldconfig trigger, as Debian's shared libraries have.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
# Only what install() names: the test programs are not installed.
set(CPACK_STRIP_FILES ON)
include(CPack)

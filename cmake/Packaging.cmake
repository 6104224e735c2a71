# What installing puts where, how other projects find it, and the Debian package.
include(CMakePackageConfigHelpers)

set(QUMEL_CMAKE_FOLDER ${CMAKE_INSTALL_LIBDIR}/cmake/qumel)

install(TARGETS qumel_shared EXPORT qumelTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT qumel NAMELINK_COMPONENT qumel)
install(DIRECTORY include/qumel DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT qumel)
install(FILES README.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT qumel)
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT qumel)  # links within keep working
install(DIRECTORY examples/ DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples COMPONENT qumel)

install(EXPORT qumelTargets NAMESPACE qumel:: DESTINATION ${QUMEL_CMAKE_FOLDER} COMPONENT qumel)
configure_package_config_file(cmake/qumelConfig.cmake.in qumelConfig.cmake
  INSTALL_DESTINATION ${QUMEL_CMAKE_FOLDER})
write_basic_package_version_file(qumelConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/qumelConfig.cmake ${CMAKE_CURRENT_BINARY_DIR}/qumelConfigVersion.cmake
  DESTINATION ${QUMEL_CMAKE_FOLDER} COMPONENT qumel)

# The prefix is told from where the file lies: packages choose theirs after configuring.
file(RELATIVE_PATH QUMEL_PREFIX_FROM_PC /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(cmake/qumel.pc.in qumel.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/qumel.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT qumel)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME qumel)
set(CPACK_PACKAGE_VENDOR "Qumel")
set(CPACK_PACKAGE_CONTACT "Qumel maintainers <maintainers@qumel.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY ${PROJECT_DESCRIPTION})
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE i386)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS OFF)  # the libraries of the other width have no packages to look up
endif()
include(CPack)

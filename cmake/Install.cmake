# What `cmake --install` puts where. Component `development` is the library with all
# that is needed to build on it, component `programs` the programs and their pages.
include(CMakePackageConfigHelpers)

# The headers as they stand: include/urldb/common/error.h and so on.
install(DIRECTORY
  ${PROJECT_SOURCE_DIR}/common
  ${PROJECT_SOURCE_DIR}/url
  ${PROJECT_SOURCE_DIR}/urldb
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/urldb
  COMPONENT development
  FILES_MATCHING PATTERN "*.h")

install(TARGETS liburldb
  EXPORT urldbTargets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)

# For find_package(urldb): the target urldb::urldb.
set(URLDB_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/urldb)
install(EXPORT urldbTargets
  NAMESPACE urldb::
  DESTINATION ${URLDB_PACKAGE_DIR}
  COMPONENT development)
configure_package_config_file(
  ${PROJECT_SOURCE_DIR}/cmake/urldbConfig.cmake.in
  ${PROJECT_BINARY_DIR}/urldbConfig.cmake
  INSTALL_DESTINATION ${URLDB_PACKAGE_DIR}
  NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(
  ${PROJECT_BINARY_DIR}/urldbConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/urldbConfig.cmake
  ${PROJECT_BINARY_DIR}/urldbConfigVersion.cmake
  DESTINATION ${URLDB_PACKAGE_DIR}
  COMPONENT development)

# For pkg-config. The prefix follows from where the file lies, so that an installed
# tree can be moved.
set(URLDB_PC_DIR ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH URLDB_PC_TO_PREFIX ${URLDB_PC_DIR} ${CMAKE_INSTALL_PREFIX})
configure_file(
  ${PROJECT_SOURCE_DIR}/cmake/urldb.pc.in
  ${PROJECT_BINARY_DIR}/urldb.pc
  @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/urldb.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
  COMPONENT development)

# Installed programs find liburldb.so beside them, wherever the tree stands.
file(RELATIVE_PATH URLDB_BIN_TO_LIB
  ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
foreach(program urldb_cli urldb_install)
  if(TARGET ${program})
    if(BUILD_SHARED_LIBS)
      set_target_properties(${program} PROPERTIES
        INSTALL_RPATH "$ORIGIN/${URLDB_BIN_TO_LIB}")
    endif()
    install(TARGETS ${program}
      RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT programs)
  endif()
endforeach()

foreach(section 1 3 5 8)
  file(GLOB pages CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/man/*.${section})
  if(pages)
    install(FILES ${pages}
      DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section} COMPONENT programs)
  endif()
endforeach()

# What find_package(tavrine) finds: the libraries as tavrine::NAME, and their headers.
include(CMakePackageConfigHelpers)

set(TAVRINE_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/tavrine)
install(DIRECTORY ${CMAKE_SOURCE_DIR}/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tavrine FILES_MATCHING PATTERN "*.h")
install(TARGETS tavrine_headers EXPORT tavrine)
install(EXPORT tavrine NAMESPACE tavrine:: DESTINATION ${TAVRINE_PACKAGE_DIR} FILE tavrineTargets.cmake)
configure_package_config_file(${CMAKE_SOURCE_DIR}/cmake/tavrineConfig.cmake.in ${CMAKE_BINARY_DIR}/tavrineConfig.cmake
  INSTALL_DESTINATION ${TAVRINE_PACKAGE_DIR})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/tavrineConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_BINARY_DIR}/tavrineConfig.cmake ${CMAKE_BINARY_DIR}/tavrineConfigVersion.cmake
  DESTINATION ${TAVRINE_PACKAGE_DIR})

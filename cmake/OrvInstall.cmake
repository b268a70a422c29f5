include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

file(GLOB ORV_PUBLIC_HEADERS CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/include/*.h)
install(FILES ${ORV_PUBLIC_HEADERS} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/OrvUtility)
install(TARGETS OrvUtility EXPORT OrvUtilityTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/OrvUtility)
install(EXPORT OrvUtilityTargets NAMESPACE OrvUtility::
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/OrvUtility)
configure_package_config_file(${CMAKE_SOURCE_DIR}/cmake/OrvUtilityConfig.cmake.in
  ${CMAKE_BINARY_DIR}/OrvUtilityConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/OrvUtility)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/OrvUtilityConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/OrvUtilityConfig.cmake ${CMAKE_BINARY_DIR}/OrvUtilityConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/OrvUtility)
# The .pc file finds its prefix from its own place, so an install moved with
# `cmake --install --prefix` stays usable.
file(RELATIVE_PATH ORV_PC_TO_PREFIX "/root/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/root")
configure_file(${CMAKE_SOURCE_DIR}/cmake/OrvUtility.pc.in ${CMAKE_BINARY_DIR}/OrvUtility.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/OrvUtility.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

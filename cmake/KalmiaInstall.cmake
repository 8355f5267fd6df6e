# Installs headers, library and package files, so that find_package(Kalmia) gives Kalmia::kalmia.
include(CMakePackageConfigHelpers)

set(KALMIA_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Kalmia)
install(TARGETS kalmia EXPORT KalmiaTargets)
# What lies inside a room is no interface: its internal/, and of the kernels all floors.
install(DIRECTORY kalmia DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
        FILES_MATCHING PATTERN "*.h" PATTERN internal EXCLUDE PATTERN analysis EXCLUDE REGEX "/kernels/[a-z]+$" EXCLUDE)
if(KALMIA_BUILD_ANALYSIS)
  install(TARGETS kalmia_analysis EXPORT KalmiaAnalysisTargets)
  install(DIRECTORY kalmia/analysis ${PROJECT_BINARY_DIR}/kalmia/analysis/include/kalmia/analysis
          DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kalmia FILES_MATCHING PATTERN "*.h" PATTERN internal EXCLUDE)
  install(EXPORT KalmiaAnalysisTargets NAMESPACE Kalmia:: DESTINATION ${KALMIA_PACKAGE_DIR})
endif()
install(EXPORT KalmiaTargets NAMESPACE Kalmia:: DESTINATION ${KALMIA_PACKAGE_DIR})
configure_package_config_file(cmake/KalmiaConfig.cmake.in ${PROJECT_BINARY_DIR}/KalmiaConfig.cmake
                              INSTALL_DESTINATION ${KALMIA_PACKAGE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/KalmiaConfigVersion.cmake
                                 COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/KalmiaConfig.cmake ${PROJECT_BINARY_DIR}/KalmiaConfigVersion.cmake
        DESTINATION ${KALMIA_PACKAGE_DIR})

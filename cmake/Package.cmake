# find_package(vnifc) gives vnifc::VnIfcCore and a target for each release that was built, vnifc::VnIfc4x3Add2 and so
# on. The libraries need nothing from others in public, so the exported targets are the whole of the package's
# configuration.
include(CMakePackageConfigHelpers)

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/vnifc")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/vnifcConfigVersion.cmake" COMPATIBILITY SameMinorVersion)
install(EXPORT vnifcTargets NAMESPACE vnifc:: FILE vnifcConfig.cmake DESTINATION ${package_dir})
install(FILES "${PROJECT_BINARY_DIR}/vnifcConfigVersion.cmake" DESTINATION ${package_dir})
install(FILES "${PROJECT_SOURCE_DIR}/LICENSE" "${PROJECT_SOURCE_DIR}/NOTICE" DESTINATION ${CMAKE_INSTALL_DOCDIR})

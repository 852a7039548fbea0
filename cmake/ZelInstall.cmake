# What is installed, and where. Every path in the installed files is relative to the file it stands
# in, so that the tree may be moved as a whole.

include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/zel)
set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(TARGETS zel EXPORT zelTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/zel ${PROJECT_BINARY_DIR}/include/zel
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")

configure_package_config_file(cmake/zelConfig.cmake.in ${PROJECT_BINARY_DIR}/zelConfig.cmake
    INSTALL_DESTINATION ${package_dir} PATH_VARS ZEL_PLUGIN_INSTALL_DIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/zelConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(EXPORT zelTargets NAMESPACE zel:: DESTINATION ${package_dir})
install(FILES
    ${PROJECT_BINARY_DIR}/zelConfig.cmake
    ${PROJECT_BINARY_DIR}/zelConfigVersion.cmake
    cmake/ZelPlugin.cmake
    DESTINATION ${package_dir})

file(RELATIVE_PATH prefix_from_pkgconfig
    ${CMAKE_INSTALL_PREFIX}/${pkgconfig_dir} ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" prefix_from_pkgconfig ${prefix_from_pkgconfig})
configure_file(cmake/zel.pc.in ${PROJECT_BINARY_DIR}/zel.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/zel.pc DESTINATION ${pkgconfig_dir})

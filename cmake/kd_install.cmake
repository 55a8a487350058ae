# What `cmake --install` lays down. Nothing installed names the place it was installed to, so the tree can be
# moved as a whole. The components are the packages of kd_packages.cmake.
include(CMakePackageConfigHelpers)

set(kd_config_dir ${CMAKE_INSTALL_LIBDIR}/cmake/kd_lib)
set(kd_pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
set(kd_generated ${kd_lib_BINARY_DIR}/package)

# The libraries and their headers
foreach(library IN ITEMS kd_udf kd_db)
    install(TARGETS ${library} EXPORT kd_libTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${library} NAMELINK_COMPONENT development
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
        FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
endforeach()

# find_package(kd_lib CONFIG)
install(EXPORT kd_libTargets NAMESPACE kd_lib:: DESTINATION ${kd_config_dir} COMPONENT development)
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/kd_libConfig.cmake.in ${kd_generated}/kd_libConfig.cmake
    INSTALL_DESTINATION ${kd_config_dir} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${kd_generated}/kd_libConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${kd_generated}/kd_libConfig.cmake ${kd_generated}/kd_libConfigVersion.cmake
    DESTINATION ${kd_config_dir} COMPONENT development)

# pkg-config: the prefix is found from the place of the file itself.
file(RELATIVE_PATH kd_prefix_from_pc /prefix/${kd_pkgconfig_dir} /prefix)
string(REGEX REPLACE "/$" "" kd_prefix_from_pc ${kd_prefix_from_pc})
foreach(library IN ITEMS kd_udf kd_db)
    configure_file(${CMAKE_CURRENT_LIST_DIR}/${library}.pc.in ${kd_generated}/${library}.pc @ONLY)
    install(FILES ${kd_generated}/${library}.pc DESTINATION ${kd_pkgconfig_dir} COMPONENT development)
endforeach()

# The files that `cmake --install` installs. None of them contains the path of the installation, so the tree can be
# moved as a whole. The components are the packages of kd_packages.cmake.
include(CMakePackageConfigHelpers)

set(kd_config_dir ${CMAKE_INSTALL_LIBDIR}/cmake/kd_lib)
set(kd_pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
set(kd_generated ${kd_lib_BINARY_DIR}/package)

# pkg-config: the prefix is derived from the place of the file itself.
file(RELATIVE_PATH kd_prefix_from_pc /prefix/${kd_pkgconfig_dir} /prefix)
string(REGEX REPLACE "/$" "" kd_prefix_from_pc ${kd_prefix_from_pc})

# The libraries, their headers and pkg-config files
function(kd_install_library library export development)
    install(TARGETS ${library} EXPORT ${export}
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${library} NAMELINK_COMPONENT ${development}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${development}
        FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT ${development})
    configure_file(${CMAKE_CURRENT_FUNCTION_LIST_DIR}/${library}.pc.in ${kd_generated}/${library}.pc @ONLY)
    install(FILES ${kd_generated}/${library}.pc DESTINATION ${kd_pkgconfig_dir} COMPONENT ${development})
endfunction()
foreach(library IN ITEMS kd_udf kd_db kd_exchange)
    kd_install_library(${library} kd_libTargets development)
endforeach()
# The loader of shared libraries searches this folder: `.load kd_tables` needs no path.
install(TARGETS kd_tables LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT kd_exchange)
# Each in separate files: users of the other libraries need neither them nor their client libraries.
foreach(library IN LISTS kd_server_libraries)
    kd_install_library(${library} ${library}Targets ${library}_development)
    install(EXPORT ${library}Targets NAMESPACE kd_lib:: DESTINATION ${kd_config_dir}
        COMPONENT ${library}_development)
endforeach()

# find_package(kd_lib CONFIG)
install(EXPORT kd_libTargets NAMESPACE kd_lib:: DESTINATION ${kd_config_dir} COMPONENT development)
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/kd_libConfig.cmake.in ${kd_generated}/kd_libConfig.cmake
    INSTALL_DESTINATION ${kd_config_dir} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${kd_generated}/kd_libConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${kd_generated}/kd_libConfig.cmake ${kd_generated}/kd_libConfigVersion.cmake
    ${CMAKE_CURRENT_LIST_DIR}/FindUtf8proc.cmake
    DESTINATION ${kd_config_dir} COMPONENT development)

option(KD_PACKAGES "Lay the files down as in Debian's packages; tools/dev/packages makes these" OFF)
if(KD_PACKAGES)
    include(${CMAKE_CURRENT_LIST_DIR}/kd_packages.cmake)
    set(kd_doc_dir share/doc/kd-db-doc)
else()
    set(kd_doc_dir ${CMAKE_INSTALL_DOCDIR})
endif()

# Documents, in the same folders as in the sources, so that their links work; and the reference, if it is built.
install(FILES ${kd_lib_SOURCE_DIR}/README.md ${kd_lib_SOURCE_DIR}/CONTRIBUTING.md ${kd_lib_SOURCE_DIR}/CHANGELOG.md
    ${kd_lib_SOURCE_DIR}/SECURITY.md DESTINATION ${kd_doc_dir} COMPONENT documentation)
install(FILES ${kd_lib_SOURCE_DIR}/tests/README.md DESTINATION ${kd_doc_dir}/tests COMPONENT documentation)
file(GLOB kd_guides ${kd_lib_SOURCE_DIR}/docs/*.md ${kd_lib_SOURCE_DIR}/docs/*.svg ${kd_lib_SOURCE_DIR}/docs/kd_db.1)
install(FILES ${kd_guides} DESTINATION ${kd_doc_dir}/docs COMPONENT documentation)
install(DIRECTORY ${kd_lib_SOURCE_DIR}/examples DESTINATION ${kd_doc_dir} COMPONENT documentation
    FILES_MATCHING PATTERN *.cpp PATTERN *.h PATTERN *.dbf PATTERN *.dbt PATTERN *.csv PATTERN *.tab PATTERN parts.txt
    PATTERN *.mem PATTERN consumer/* PATTERN expected EXCLUDE)
if(KD_BUILD_DOCS)
    install(DIRECTORY ${kd_lib_BINARY_DIR}/docs/reference/html DESTINATION ${kd_doc_dir} COMPONENT documentation)
endif()

# The program, which finds the libraries relative to itself, and its manual page, compressed as in Debian.
if(TARGET kd_db_program)
    file(RELATIVE_PATH kd_lib_from_bin /prefix/${CMAKE_INSTALL_BINDIR} /prefix/${CMAKE_INSTALL_LIBDIR})
    set_target_properties(kd_db_program PROPERTIES INSTALL_RPATH $ORIGIN/${kd_lib_from_bin})

    set(kd_manual ${kd_lib_SOURCE_DIR}/docs/kd_db.1)
    if(KD_PACKAGES)
        configure_file(${kd_manual} ${kd_generated}/kd_db.1 COPYONLY)
        execute_process(COMMAND gzip -9nfk ${kd_generated}/kd_db.1 COMMAND_ERROR_IS_FATAL ANY)
        set(kd_manual ${kd_generated}/kd_db.1.gz)
    endif()
    install(FILES ${kd_manual} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT program)
endif()

# Debian packages by CPack: one per component, and the files that such packages need besides the installed ones.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME kd-lib)
set(CPACK_PACKAGE_VERSION ${kd_lib_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each package has a separate one
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(KD_MAINTAINER "kd_db developers <developers@kd-db.invalid>" CACHE STRING "The maintainer that the packages name")
set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${KD_MAINTAINER})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
    ${kd_lib_BINARY_DIR}/src/udf ${kd_lib_BINARY_DIR}/src/db ${kd_lib_BINARY_DIR}/src/exchange
    ${kd_lib_BINARY_DIR}/src/postgresql ${kd_lib_BINARY_DIR}/src/mariadb)

# kd_package(COMPONENT NAME SECTION SUMMARY DESCRIPTION [DEPENDS...])
set(CPACK_COMPONENTS_ALL)
function(kd_package component name section summary description)
    string(TOUPPER ${component} COMPONENT)
    list(APPEND CPACK_COMPONENTS_ALL ${component})
    set(CPACK_COMPONENTS_ALL ${CPACK_COMPONENTS_ALL} PARENT_SCOPE)
    list(JOIN ARGN ", " depends)
    set(CPACK_DEBIAN_${COMPONENT}_PACKAGE_NAME ${name} PARENT_SCOPE)
    set(CPACK_DEBIAN_${COMPONENT}_PACKAGE_SECTION ${section} PARENT_SCOPE)
    set(CPACK_DEBIAN_${COMPONENT}_DESCRIPTION "${summary}\n${description}" PARENT_SCOPE)
    set(CPACK_DEBIAN_${COMPONENT}_PACKAGE_DEPENDS "${depends}" PARENT_SCOPE)
    if(section STREQUAL doc)
        set(CPACK_DEBIAN_${COMPONENT}_PACKAGE_ARCHITECTURE all PARENT_SCOPE)
    elseif(NOT section STREQUAL libdevel)
        set(CPACK_DEBIAN_${COMPONENT}_PACKAGE_SHLIBDEPS ON PARENT_SCOPE)
    endif()
    if(section STREQUAL libs)
        set(CPACK_DEBIAN_${COMPONENT}_PACKAGE_CONTROL_EXTRA ${kd_generated}/triggers PARENT_SCOPE)
    endif()
    # The README of each package: the first steps of its user. That of the documents is the project's README.
    set(readme library)
    if(component MATCHES "_development$")
        set(readme server_development)
    elseif(EXISTS ${kd_lib_SOURCE_DIR}/cmake/debian/readme/${component}.md)
        set(readme ${component})
    endif()
    install(FILES ${kd_lib_SOURCE_DIR}/cmake/debian/readme/${readme}.md DESTINATION share/doc/${name}
        RENAME README.Debian COMPONENT ${component})
    install(FILES ${kd_generated}/changelog.gz ${kd_generated}/changelog.Debian.gz
        DESTINATION share/doc/${name} COMPONENT ${component})
endfunction()

# The change log twice: the project's, and the packages' in their own form. string(TIMESTAMP) obeys
# SOURCE_DATE_EPOCH.
string(TIMESTAMP kd_package_date "%a, %d %b %Y %H:%M:%S +0000" UTC)
configure_file(${CMAKE_CURRENT_LIST_DIR}/debian/changelog.in ${kd_generated}/changelog.Debian @ONLY)
configure_file(${kd_lib_SOURCE_DIR}/CHANGELOG.md ${kd_generated}/changelog COPYONLY)
foreach(file IN ITEMS changelog changelog.Debian)
    execute_process(COMMAND gzip -9nfk ${kd_generated}/${file} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
file(WRITE ${kd_generated}/triggers "activate-noawait ldconfig\n")

set(kd_same "(= ${kd_lib_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")
kd_package(kd_udf libkd-udf${kd_lib_VERSION_MAJOR} libs "support functions of the kd_lib libraries"
    "Console output, text and path functions, byte order and tokens, as used by\nthe table access library libkd_db.")
kd_package(kd_db libkd-db${kd_lib_VERSION_MAJOR} libs "table access for console programs (library)"
    "One model of typed fields over positional and delimited text, xBase tables\nand SQLite databases, and the conversion of xBase tables to SQL."
    "libkd-udf1 ${kd_same}")
kd_package(kd_exchange libkd-exchange${kd_lib_VERSION_MAJOR} libs "tables carried between files and databases (library)"
    "Reads xBase tables with memo files, delimited and fixed-column text, and\ncarries their records into SQL scripts, CSV, JSON lines and SQLite databases."
    "libkd-db1 ${kd_same}" "libkd-udf1 ${kd_same}")
kd_package(development libkd-db-dev libdevel "table access for console programs (development files)"
    "Headers, CMake package and pkg-config files for programs that use libkd_db\nor libkd_exchange."
    "libkd-exchange1 ${kd_same}" "libkd-db1 ${kd_same}" "libkd-udf1 ${kd_same}")
set(kd_server_titles PostgreSQL MariaDB)
set(kd_server_clients libpq-dev libmariadb-dev)
set(kd_below_servers "libkd-exchange1 ${kd_same}" "libkd-db1 ${kd_same}" "libkd-udf1 ${kd_same}")
set(kd_server_packages)
foreach(server client IN ZIP_LISTS kd_server_titles kd_server_clients)
    string(TOLOWER ${server} name)
    if(NOT kd_${name} IN_LIST kd_server_libraries)
        continue()
    endif()
    kd_package(kd_${name} libkd-${name}${kd_lib_VERSION_MAJOR} libs "table access for console programs (${server})"
        "Queries ${server} servers and loads tables into them." ${kd_below_servers})
    kd_package(kd_${name}_development libkd-${name}-dev libdevel "table access for ${server} (development files)"
        "Header, CMake targets and pkg-config file for programs that use\nlibkd_${name}."
        "libkd-${name}1 ${kd_same}" "libkd-db-dev ${kd_same}" ${client})
    list(APPEND kd_server_packages "libkd-${name}1 ${kd_same}")
endforeach()
kd_package(program kd-db database "shows, converts and loads xBase and text tables"
    "Lists xBase and text tables, turns them into SQL scripts, loads them into\nSQLite databases and prints the results of queries."
    "libkd-exchange1 ${kd_same}" "libkd-db1 ${kd_same}" "libkd-udf1 ${kd_same}")
# The program opens these libraries when it needs them.
list(JOIN kd_server_packages ", " CPACK_DEBIAN_PROGRAM_PACKAGE_RECOMMENDS)
kd_package(documentation kd-db-doc doc "table access for console programs (documents)"
    "Guides to the library libkd_db and its file formats, and examples.")

include(CPack)

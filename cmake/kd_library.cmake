# The compilation of the libraries' code: standard, visibility, warnings.
function(kd_configure_code name)
    target_compile_features(${name} PUBLIC cxx_std_20)
    target_link_libraries(${name} PRIVATE $<BUILD_INTERFACE:kd_warnings>)
    set_target_properties(${name} PROPERTIES
        CXX_EXTENSIONS OFF
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON
        POSITION_INDEPENDENT_CODE ON)
endfunction()

# kd_configure_library(NAME HEADER...): further settings of the libraries: versions, the name that clients link, and
# their public headers.
function(kd_configure_library name)
    kd_configure_code(${name})
    add_library(kd_lib::${name} ALIAS ${name})
    list(TRANSFORM ARGN PREPEND ${kd_lib_SOURCE_DIR}/include/kd_lib/)
    target_sources(${name} PUBLIC FILE_SET HEADERS BASE_DIRS ${kd_lib_SOURCE_DIR}/include FILES ${ARGN})
    set_target_properties(${name} PROPERTIES
        VERSION ${kd_lib_VERSION}
        SOVERSION ${kd_lib_VERSION_MAJOR})
    # libkd_udf is linked with no other library of the project.
    if(NOT name STREQUAL kd_udf)
        set_target_properties(${name} PROPERTIES INSTALL_RPATH $ORIGIN)
    endif()
endfunction()

# What both libraries share: standard, visibility, versions, the name that clients link, and their public
# headers, which are the arguments behind the name.
function(kd_configure_library name)
    add_library(kd_lib::${name} ALIAS ${name})
    list(TRANSFORM ARGN PREPEND ${kd_lib_SOURCE_DIR}/include/kd_lib/)
    target_sources(${name} PUBLIC FILE_SET HEADERS BASE_DIRS ${kd_lib_SOURCE_DIR}/include FILES ${ARGN})
    target_compile_features(${name} PUBLIC cxx_std_20)
    target_link_libraries(${name} PRIVATE $<BUILD_INTERFACE:kd_warnings>)
    set_target_properties(${name} PROPERTIES
        VERSION ${kd_lib_VERSION}
        SOVERSION ${kd_lib_VERSION_MAJOR}
        INSTALL_RPATH $ORIGIN
        CXX_EXTENSIONS OFF
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON
        POSITION_INDEPENDENT_CODE ON)
endfunction()

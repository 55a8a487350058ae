# What both libraries share: standard, headers, visibility, versions, the name that clients link.
function(kd_configure_library name)
    add_library(kd_lib::${name} ALIAS ${name})
    target_compile_features(${name} PUBLIC cxx_std_20)
    target_include_directories(${name} PUBLIC
        $<BUILD_INTERFACE:${kd_lib_SOURCE_DIR}/include>
        $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
    target_link_libraries(${name} PRIVATE $<BUILD_INTERFACE:kd_warnings>)
    set_target_properties(${name} PROPERTIES
        VERSION ${kd_lib_VERSION}
        SOVERSION ${kd_lib_VERSION_MAJOR}
        CXX_EXTENSIONS OFF
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON
        POSITION_INDEPENDENT_CODE ON)
endfunction()

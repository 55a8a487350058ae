# Two builds give the same bytes: the built files contain no path of the building machine. Debug builds keep the paths,
# for the debugger.
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)
add_compile_options(
    $<$<NOT:$<CONFIG:Debug>>:-ffile-prefix-map=${kd_lib_BINARY_DIR}=build>
    $<$<NOT:$<CONFIG:Debug>>:-ffile-prefix-map=${kd_lib_SOURCE_DIR}/=>)

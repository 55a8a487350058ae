# The warnings of this project's own code: an interface target, linked privately and never exported.
add_library(kd_warnings INTERFACE)
target_compile_options(kd_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast
    -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align -Wformat=2 -Wundef)
# A unity build, for GCC, makes every source an included file; there it warns of private names in types.
if(CMAKE_UNITY_BUILD AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(kd_warnings INTERFACE -Wno-subobject-linkage)
endif()
option(KD_WARNINGS_AS_ERRORS "A warning stops the build" OFF)
if(KD_WARNINGS_AS_ERRORS)
    target_compile_options(kd_warnings INTERFACE -Werror)
endif()

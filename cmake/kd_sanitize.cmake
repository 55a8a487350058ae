# Sanitizers for everything that this build makes; the standard library's own checks come with them.
set(KD_SANITIZE "" CACHE STRING "Sanitizers, such as address,undefined")
if(KD_SANITIZE)
    add_compile_options(-fsanitize=${KD_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${KD_SANITIZE})
    add_compile_definitions(_GLIBCXX_ASSERTIONS)
endif()

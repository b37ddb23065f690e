# VEX_SANITIZE: a list for -fsanitize, such as address,undefined.
set(VEX_SANITIZE "" CACHE STRING "Sanitizers to compile with")
if(VEX_SANITIZE)
    target_compile_options(vex_warnings INTERFACE
        -fsanitize=${VEX_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(vex_warnings INTERFACE -fsanitize=${VEX_SANITIZE})
endif()

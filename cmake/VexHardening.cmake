# Protection against what a fault in memory can be used for, in everything that is built; no number changes by it.
if(MSVC OR VEX_SANITIZE) # MSVC protects by itself; the sanitizers see more
    return()
endif()
target_compile_options(vex_warnings INTERFACE -fstack-protector-strong)
# Checked forms of memcpy() and the like need optimization. Whoever sets a level has chosen.
if(NOT "${CMAKE_CXX_FLAGS} ${CMAKE_CXX_FLAGS_RELEASE} ${CMAKE_CXX_FLAGS_RELWITHDEBINFO}" MATCHES "_FORTIFY_SOURCE")
    target_compile_definitions(vex_warnings INTERFACE
        $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:_FORTIFY_SOURCE=2>)
endif()
if(MINGW) # both come from libssp-0.dll, which the zip carries; what else there is, is the linker's default
    target_link_options(vex_warnings INTERFACE -fstack-protector-strong)
elseif(UNIX AND NOT APPLE)
    if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64|amd64|i.86)$")
        target_compile_options(vex_warnings INTERFACE -fcf-protection)
    elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(aarch64|arm64)$")
        target_compile_options(vex_warnings INTERFACE -mbranch-protection=standard)
    endif()
    target_link_options(vex_warnings INTERFACE LINKER:-z,relro,-z,now)
endif()

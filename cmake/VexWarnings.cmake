# vex_warnings: what every target of the project is compiled with, linked privately.
add_library(vex_warnings INTERFACE)
file(RELATIVE_PATH vex_sources ${CMAKE_BINARY_DIR} ${PROJECT_SOURCE_DIR}) # as ccache may give them to the compiler
if(MSVC)
    target_compile_options(vex_warnings INTERFACE /W4 /permissive- /fp:precise /utf-8)
else()
    target_compile_options(vex_warnings INTERFACE
        -Wall -Wextra -Wpedantic -Wconversion -Wshadow
        -ffp-contract=off # a product and a sum stay two roundings on every machine
        -ffile-prefix-map=${PROJECT_SOURCE_DIR}/= # no path of the build machine in what is built
        -ffile-prefix-map=${vex_sources}=)
    if(MINGW) # the newest form of debug data that DbgHelp under Wine reads
        target_compile_options(vex_warnings INTERFACE -gdwarf-4)
    endif()
    # names and lines for crash reports, a quarter of the size of all debug data; packages carry them apart
    target_compile_options(vex_warnings INTERFACE $<$<CONFIG:Release>:-g1>)
endif()
target_compile_definitions(vex_warnings INTERFACE
    QT_MESSAGELOGCONTEXT # file, line and function of a message in every build type
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS QT_NO_FOREACH
    QT_DISABLE_DEPRECATED_BEFORE=0x060400)

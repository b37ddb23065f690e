# What names the functions of a crash: DbgHelp on Windows; elsewhere libbacktrace, which comes with GCC. Without it a crash
# report has addresses and modules only.
if(WIN32)
    target_link_libraries(vex_objects PUBLIC dbghelp)
    return()
endif()
execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=libbacktrace.a
    OUTPUT_VARIABLE vex_backtrace OUTPUT_STRIP_TRAILING_WHITESPACE)
cmake_path(GET vex_backtrace PARENT_PATH vex_backtrace_folder)
if(EXISTS "${vex_backtrace}" AND EXISTS "${vex_backtrace_folder}/include/backtrace.h")
    set_source_files_properties(platform/StackWalk_unix.cpp PROPERTIES
        COMPILE_DEFINITIONS VEX_HAS_BACKTRACE
        COMPILE_OPTIONS "-idirafter;${vex_backtrace_folder}/include")
    set(VEX_BACKTRACE ${vex_backtrace})
    target_link_libraries(vex_objects PUBLIC ${vex_backtrace} ${CMAKE_DL_LIBS})
else()
    message(STATUS "libbacktrace not found (it comes with GCC): crash reports will have addresses and no names")
endif()

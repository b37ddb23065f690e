# Two zips for Windows: the program with all that it loads, and the debug data of what is built here, which unpacks
# into the same folder. A debugger, or whatever names the functions of a crash, finds it there.
set(CPACK_GENERATOR ZIP)
set(CPACK_SYSTEM_NAME windows-x86_64)
set(CPACK_ARCHIVE_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_COMPONENT_INCLUDE_TOPLEVEL_DIRECTORY ON)
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
    string(TOUPPER ${component} component)
    set(CPACK_COMPONENT_${component}_GROUP program)
endforeach()
set(zip_name vex-${PROJECT_VERSION}-${CPACK_SYSTEM_NAME})
set(CPACK_ARCHIVE_PROGRAM_FILE_NAME ${zip_name})
set(licences ${CMAKE_INSTALL_DOCDIR}/licences)
install(FILES CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR})

# What the program needs beside itself: Qt, and the libraries of the compiler.
set(vex_runtime_files $<TARGET_FILE:Qt6::Core>)
if(MINGW)
    foreach(dll IN ITEMS libgcc_s_seh-1.dll libssp-0.dll libstdc++-6.dll libwinpthread-1.dll)
        execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${dll}
            OUTPUT_VARIABLE place OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
        if(IS_ABSOLUTE "${place}") # a compiler without libssp needs none
            list(APPEND vex_runtime_files ${place})
        endif()
    endforeach()
    # their terms, as Debian's packages and scripts/windows-root have them; the test install.zip misses none
    install(FILES cmake/package/licences.txt DESTINATION ${licences} RENAME README.txt)
    foreach(package IN ITEMS gcc-mingw-w64-base mingw-w64-x86-64-dev)
        install(FILES /usr/share/doc/${package}/copyright DESTINATION ${licences} RENAME ${package}.txt OPTIONAL)
    endforeach()
    install(DIRECTORY /usr/share/common-licenses/ DESTINATION ${licences}/common FILES_MATCHING PATTERN *GPL-*)
    get_filename_component(qt_root ${Qt6_DIR}/../../.. ABSOLUTE)
    install(DIRECTORY ${qt_root}/share/licences/ DESTINATION ${licences} OPTIONAL)
endif()
install(FILES ${vex_runtime_files} DESTINATION ${CMAKE_INSTALL_BINDIR})
if(MINGW AND CMAKE_STRIP) # Debian's have debug data, 20 MB
    install(CODE "if(CMAKE_INSTALL_DO_STRIP)
        foreach(file IN ITEMS ${vex_runtime_files})
            cmake_path(GET file FILENAME file)
            execute_process(COMMAND_ERROR_IS_FATAL ANY COMMAND
                ${CMAKE_STRIP} \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}/\${file}\")
        endforeach()\nendif()")
endif()

if(MINGW AND CMAKE_OBJCOPY)
    list(APPEND CPACK_COMPONENTS_ALL vex_debug)
    set(CPACK_COMPONENT_VEX_DEBUG_GROUP debug)
    set(CPACK_ARCHIVE_DEBUG_FILE_NAME ${zip_name}-debug)
    file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/package)
    set(targets ${vex_targets} vexcopier)
    if(VEX_BUILD_PROGRAM)
        list(APPEND targets vexcli)
    endif()
    foreach(target IN LISTS targets)
        # the same for both zips: each is made on its own
        set(file $<TARGET_FILE_NAME:${target}>)
        set(debug_file ${PROJECT_BINARY_DIR}/package/${file}.debug)
        set(keep "execute_process(COMMAND ${CMAKE_OBJCOPY} --only-keep-debug $<TARGET_FILE:${target}> ${debug_file}
            COMMAND_ERROR_IS_FATAL ANY)\n")
        set(bin "\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}")
        install(CODE "${keep}file(INSTALL ${debug_file} DESTINATION \"${bin}\")"
            COMPONENT vex_debug EXCLUDE_FROM_ALL)
        if(target STREQUAL vexcli)
            set(component vex_program)
        else()
            set(component vex_runtime)
        endif()
        install(CODE "if(CMAKE_INSTALL_DO_STRIP)
            ${keep}execute_process(COMMAND ${CMAKE_OBJCOPY} --add-gnu-debuglink=${debug_file} \"\$ENV{DESTDIR}${bin}/${file}\"
            COMMAND_ERROR_IS_FATAL ANY)\nendif()" COMPONENT ${component})
    endforeach()
endif()

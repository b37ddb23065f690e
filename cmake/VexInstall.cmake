# Package "vex": headers, libraries, program, CMake package and pkg-config file, in three components:
# vex_program, vex_runtime (what programs load) and vex_development.
include(CMakePackageConfigHelpers)
set(vex_development COMPONENT vex_development)

set(vex_targets vex)
set(VEX_PC_REQUIRES "Qt6Core")
if(VEX_COMPANIONS STREQUAL standin)
    list(APPEND vex_targets vex_common_stable vex_common_core_mini)
    set(VEX_PC_COMPANION_LIBS -lvex_common_stable)
else() # callers use the headers of the first, too; the second is found through the library
    set(VEX_PC_COMPANION_LIBS $<TARGET_LINKER_FILE:vex::common_stable>)
    get_target_property(folders vex::common_stable INTERFACE_INCLUDE_DIRECTORIES)
    if(folders)
        list(JOIN folders " -I" folders)
        set(VEX_PC_COMPANION_CFLAGS "-I${folders}")
    endif()
endif()

if(VEX_BUILD_PROGRAM)
    if(VEX_COMPANIONS STREQUAL system) # else the program loads none of these libraries
        set_target_properties(vexcli PROPERTIES INSTALL_RPATH "$ORIGIN/${VEX_LIBRARY_FOLDER}")
    endif()
    install(TARGETS vexcli RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT vex_program)
    if(TARGET vexplot) # where the program looks for it
        install(TARGETS vexplot LIBRARY COMPONENT vex_program
            DESTINATION $<IF:$<BOOL:${WIN32}>,${CMAKE_INSTALL_BINDIR},${CMAKE_INSTALL_LIBDIR}/vex>)
    endif()
    if(TARGET vex_man)
        install(DIRECTORY ${PROJECT_BINARY_DIR}/apps/vexcli/man/ # missing where only the program was built
            DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT vex_program OPTIONAL)
    endif()
    if(UNIX)
        install(FILES apps/vexcli/completion/vex
            DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT vex_program)
    endif()
endif()
set_target_properties(${vex_targets} PROPERTIES INSTALL_RPATH "$ORIGIN")
if(WIN32) # beside the programs that call it: the system looks there first
    install(TARGETS vexcopier RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT vex_runtime)
endif()

install(TARGETS ${vex_targets} EXPORT vexTargets
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT vex_runtime
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT vex_runtime NAMELINK_COMPONENT vex_development
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} ${vex_development}
    FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} ${vex_development})
if(TARGET vexkeychain) # beside the library, which loads it
    install(TARGETS vexkeychain LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT vex_runtime NAMELINK_SKIP)
endif()
# The helper that saves where the user may not write. On Windows the shell looks for it beside the program.
set(VEX_COPIER_FOLDER $<IF:$<BOOL:${WIN32}>,${CMAKE_INSTALL_BINDIR},${CMAKE_INSTALL_LIBEXECDIR}/vex>)
install(TARGETS vexcopier RUNTIME DESTINATION ${VEX_COPIER_FOLDER} COMPONENT vex_runtime)
if(UNIX) # what polkit asks before it lets the helper run; the prefix is known when it is installed
    install(CODE "set(VEX_COPIER \${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBEXECDIR}/vex/Vex-File-Copier)
        set(policy \${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_DATADIR}/polkit-1/actions/vex-file-copier.policy)
        configure_file(${PROJECT_SOURCE_DIR}/apps/file-copier/vex-file-copier.policy.in \$ENV{DESTDIR}\${policy} @ONLY)
        list(APPEND CMAKE_INSTALL_MANIFEST_FILES \${policy})" COMPONENT vex_runtime)
endif()

install(EXPORT vexTargets NAMESPACE vex:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vex ${vex_development})

configure_package_config_file(cmake/vexConfig.cmake.in vexConfig.cmake
    INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vex
    NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(vexConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vexConfig.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/vexConfigVersion.cmake
    cmake/VexBuildInfo.cmake
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vex ${vex_development})

if(VEX_KEYCHAIN_INCLUDE AND NOT WIN32) # a zip goes to other machines, where that folder is another
    set(VEX_PC_KEYCHAIN_CFLAGS "-I${VEX_KEYCHAIN_INCLUDE}")
endif()
file(RELATIVE_PATH VEX_PC_PREFIX /${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig /${CMAKE_INSTALL_PREFIX})
configure_file(cmake/vex.pc.in vex.pc.in @ONLY)
file(GENERATE OUTPUT vex.pc INPUT ${CMAKE_CURRENT_BINARY_DIR}/vex.pc.in)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vex.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig ${vex_development})

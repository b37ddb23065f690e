# cpack: a package for Debian, or a zip for Windows that runs from wherever it is unpacked.
set(CPACK_PACKAGE_NAME vex)
set(CPACK_PACKAGE_VENDOR vex)
set(CPACK_PACKAGE_CONTACT "The developers of vex")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY ${PROJECT_DESCRIPTION})
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_VERBATIM_VARIABLES ON)

install(FILES README.md CHANGELOG.md docs/dependencies.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(FILES data/l_glutamate_xic.csv data/proteins.fasta data/published_masses.csv
    DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples)

if(WIN32)
    set(CPACK_GENERATOR ZIP)
    set(CPACK_SYSTEM_NAME windows-x86_64)
    # What the program needs beside itself: Qt, and the libraries of the compiler.
    set(vex_runtime $<TARGET_FILE:Qt6::Core>)
    if(MINGW)
        foreach(dll IN ITEMS libgcc_s_seh-1.dll libstdc++-6.dll libwinpthread-1.dll)
            execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${dll}
                OUTPUT_VARIABLE place OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
            list(APPEND vex_runtime ${place})
        endforeach()
    endif()
    install(FILES ${vex_runtime} DESTINATION ${CMAKE_INSTALL_BINDIR})
else()
    set(CPACK_GENERATOR DEB)
    set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
    set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
    set(CPACK_DEBIAN_PACKAGE_SECTION libdevel)
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
    set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON) # also has the linker's cache brought up to date
    set(CPACK_DEBIAN_PACKAGE_SUGGESTS "qt6-base-dev, cmake, pkg-config") # to build against it
endif()
include(CPack)

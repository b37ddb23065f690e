# Packages for Debian: vex (the program), libvex6 (what programs load) and libvex-dev (to build against it).
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON) # also has the linker's cache brought up to date
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
# Names and lines for crash reports, in packages of their own: vex-dbgsym and libvex6-dbgsym. Making them strips the rest.
set(CPACK_STRIP_FILES OFF)
set(CPACK_DEBIAN_VEX_PROGRAM_DEBUGINFO_PACKAGE ON)
set(CPACK_DEBIAN_VEX_RUNTIME_DEBUGINFO_PACKAGE ON)

# vex_describe_package(COMPONENT NAME SECTION DESCRIPTION): and what every package of Debian documents
function(vex_describe_package component name section description)
    string(TOUPPER ${component} upper)
    set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name} PARENT_SCOPE)
    set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section} PARENT_SCOPE)
    set(CPACK_DEBIAN_${upper}_DESCRIPTION "${description}" PARENT_SCOPE)

    set(folder ${PROJECT_BINARY_DIR}/package/${name})
    string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC) # SOURCE_DATE_EPOCH, where that is set
    configure_file(${package}/changelog.in ${folder}/changelog.Debian @ONLY)
    configure_file(${package}/copyright.in ${folder}/copyright @ONLY)
    configure_file(${PROJECT_SOURCE_DIR}/CHANGELOG.md ${folder}/changelog COPYONLY)
    execute_process(COMMAND gzip -9nf changelog.Debian changelog WORKING_DIRECTORY ${folder} COMMAND_ERROR_IS_FATAL ANY)
    install(FILES ${folder}/copyright ${folder}/changelog.Debian.gz ${folder}/changelog.gz DESTINATION share/doc/${name}
        COMPONENT ${component} EXCLUDE_FROM_ALL)
    string(REGEX REPLACE "^libvex[0-9]+$" "libvex" overrides ${name})
    install(FILES ${package}/${overrides}.lintian-overrides DESTINATION share/lintian/overrides RENAME ${name}
        COMPONENT ${component} EXCLUDE_FROM_ALL)
endfunction()

set(package ${PROJECT_SOURCE_DIR}/cmake/package)
set(library libvex${PROJECT_VERSION_MAJOR})
vex_describe_package(vex_program vex science [[
The program vex predicts isotope patterns of proteins, converts between average
and monoisotopic mass, reads molecular formulas, compares chromatograms and
spectra, and moves folders of measurements without losing a file.]])
vex_describe_package(vex_runtime ${library} libs [[
The library: molecular formulas, isotope patterns of proteins, comparison of
signals, file types and moves of folders. Programs built with libvex-dev load
it.]])
vex_describe_package(vex_development libvex-dev libdevel [[
Headers, CMake package and pkg-config file of the library, for C++20 on Qt 6.]])
set(CPACK_DEBIAN_VEX_RUNTIME_PACKAGE_CONTROL_EXTRA ${package}/triggers)
set(CPACK_DEBIAN_VEX_RUNTIME_PACKAGE_RECOMMENDS pkexec) # to save where the user may not write
set(CPACK_COMPONENT_VEX_PROGRAM_DEPENDS vex_runtime)
set(CPACK_COMPONENT_VEX_DEVELOPMENT_DEPENDS vex_runtime)
set(CPACK_DEBIAN_VEX_DEVELOPMENT_PACKAGE_DEPENDS "qt6-base-dev, qtkeychain-qt6-dev")
set(CPACK_DEBIAN_VEX_DEVELOPMENT_PACKAGE_SUGGESTS "cmake, pkg-config")

# The system's own folders need no path in the libraries.
set(CPACK_PRE_BUILD_SCRIPTS ${package}/RemoveRunPaths.cmake)

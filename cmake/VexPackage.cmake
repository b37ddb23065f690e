# cpack: packages for Debian, or zips for Windows that run from wherever they are unpacked. All is stripped.
set(VEX_MAINTAINER "The developers of vex <vex@example.org>" CACHE STRING
    "Who stands for the packages: name <address>. Whoever hands packages on enters a real one")
set(CPACK_PACKAGE_NAME vex)
set(CPACK_PACKAGE_VENDOR vex)
set(CPACK_PACKAGE_CONTACT ${VEX_MAINTAINER})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY ${PROJECT_DESCRIPTION})
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL vex_program vex_runtime vex_development)
if(NOT VEX_BUILD_PROGRAM)
    list(REMOVE_ITEM CPACK_COMPONENTS_ALL vex_program)
endif()

install(FILES README.md docs/dependencies.md docs/program.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(FILES data/l_glutamate_xic.csv data/proteins.fasta data/published_masses.csv
    DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples)

if(WIN32)
    include(VexPackageZip)
else()
    include(VexPackageDeb)
endif()
include(CPack)

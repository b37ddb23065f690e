# Target docs: HTML of the exported headers and of the pages in docs/. Test docs.doxygen: the same run,
# which fails on an exported symbol without documentation, a wrong parameter name or a missing page.
find_package(Doxygen 1.9.4 QUIET OPTIONAL_COMPONENTS dot)
if(NOT DOXYGEN_FOUND)
    message(STATUS "Doxygen 1.9.4 not found: target docs and test docs.doxygen are left out")
    return()
endif()

set(VEX_DOCS_OUTPUT ${PROJECT_BINARY_DIR}/docs)
set(VEX_DOCS_HAVE_DOT NO)
if(TARGET Doxygen::dot)
    set(VEX_DOCS_HAVE_DOT YES)
endif()
set(VEX_DOCS_MAINPAGE "")
set(VEX_DOCS_PAGES "")
foreach(page IN ITEMS CHANGELOG CONTRIBUTING README)
    if(EXISTS ${PROJECT_SOURCE_DIR}/${page}.md)
        string(APPEND VEX_DOCS_PAGES " \"${PROJECT_SOURCE_DIR}/${page}.md\"")
    endif()
endforeach()
if(EXISTS ${PROJECT_SOURCE_DIR}/README.md)
    set(VEX_DOCS_MAINPAGE ${PROJECT_SOURCE_DIR}/README.md)
endif()
configure_file(${PROJECT_SOURCE_DIR}/docs/Doxyfile.in ${VEX_DOCS_OUTPUT}/Doxyfile @ONLY)

add_custom_target(docs
    COMMAND Doxygen::doxygen ${VEX_DOCS_OUTPUT}/Doxyfile
    COMMENT "Writing ${VEX_DOCS_OUTPUT}/html/index.html"
    VERBATIM)

if(CMAKE_HOST_UNIX)
    add_test(NAME docs.doxygen COMMAND ${PROJECT_SOURCE_DIR}/scripts/check-docs
        $<TARGET_FILE:Doxygen::doxygen> ${VEX_DOCS_OUTPUT}/Doxyfile ${VEX_DOCS_OUTPUT}/xml)
    set_tests_properties(docs.doxygen PROPERTIES LABELS script TIMEOUT 300)
else()
    message(STATUS "No shell for scripts/check-docs: test docs.doxygen is left out")
endif()

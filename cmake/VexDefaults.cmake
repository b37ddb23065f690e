# Settings that every target of the project starts from; none of them reaches a consumer or an outer project.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_VERIFY_INTERFACE_HEADER_SETS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
# From the programs to the libraries: what a program looks for there lies as far away where it is built as installed.
file(RELATIVE_PATH VEX_LIBRARY_FOLDER /${CMAKE_INSTALL_FULL_BINDIR} /${CMAKE_INSTALL_FULL_LIBDIR})
cmake_path(ABSOLUTE_PATH VEX_LIBRARY_FOLDER BASE_DIRECTORY ${CMAKE_RUNTIME_OUTPUT_DIRECTORY} NORMALIZE
    OUTPUT_VARIABLE CMAKE_LIBRARY_OUTPUT_DIRECTORY)
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME vex_program) # for what is not the library's (cmake/VexInstall.cmake)

if(WIN32)
    set(CMAKE_SHARED_LIBRARY_PREFIX "") # vex.dll with every compiler
endif()

# As a part of another project this one leaves what holds for the whole to that: nothing goes into the cache.
if(PROJECT_IS_TOP_LEVEL)
    if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
        set(CMAKE_BUILD_TYPE Release CACHE STRING "" FORCE)
    endif()
    include(CheckPIESupported)
    check_pie_supported(LANGUAGES CXX) # programs can be loaded anywhere
endif()

if(DEFINED BUILD_SHARED_LIBS AND NOT BUILD_SHARED_LIBS)
    message(FATAL_ERROR "vex: BUILD_SHARED_LIBS=OFF is not possible. A program and its plugins share the registry of "
        "file types; with a static library each would have its own. Before add_subdirectory(): set(BUILD_SHARED_LIBS ON)")
endif()

# Limits what a shared library exports to namespace vex.
function(vex_limit_exports target)
    if(UNIX AND NOT APPLE)
        target_link_options(${target} PRIVATE LINKER:--version-script=${PROJECT_SOURCE_DIR}/cmake/vex.map)
        set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${PROJECT_SOURCE_DIR}/cmake/vex.map)
    endif()
endfunction()

# vex_build_info(target [VERSION 1.2.3] [PATH apps/mine]): defines vex::buildInfo() of <vex/BuildInfoData.h> in target,
# for the reports of <vex/SysInfoCreator.h>.
#
# VERSION is that of the project by default, PATH the current source folder seen from the top of the project. The
# branch comes from git; CMake runs again when another one is checked out. Date and time are those of SOURCE_DATE_EPOCH
# where that is set. Otherwise they tell when CMake first ran in the build folder, or first ran with another version,
# path or branch: a new time with every run would have the application linked again each time.

# What git answers in the source folder; empty when there is no git, no repository, or none of this user.
function(_vex_ask_git result)
    set(answer "")
    if(GIT_EXECUTABLE)
        # a hook that builds has these set for the repository it belongs to
        execute_process(COMMAND ${CMAKE_COMMAND} -E env --unset=GIT_DIR --unset=GIT_WORK_TREE ${GIT_EXECUTABLE} ${ARGN}
            WORKING_DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}"
            OUTPUT_VARIABLE answer OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET RESULT_VARIABLE code ENCODING UTF-8)
        if(NOT code EQUAL 0)
            set(answer "")
        endif()
    endif()
    set(${result} "${answer}" PARENT_SCOPE)
endfunction()

# The text between the quotes of a C++ literal: bytes that could mean something there, or to CMake, as numbers.
function(_vex_literal result text)
    if(NOT text MATCHES "^[A-Za-z0-9 ./_:+-]*$")
        string(HEX "${text}" text)
        string(REGEX REPLACE "(..)" "\\\\x\\1" text "${text}")
    endif()
    set(${result} "${text}" PARENT_SCOPE)
endfunction()

function(vex_build_info target)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "VERSION;PATH" "")
    if(NOT DEFINED arg_VERSION)
        set(arg_VERSION "${PROJECT_VERSION}")
    endif()
    if(NOT DEFINED arg_PATH)
        file(RELATIVE_PATH arg_PATH "${PROJECT_SOURCE_DIR}" "${CMAKE_CURRENT_SOURCE_DIR}")
        if(arg_PATH STREQUAL "")
            set(arg_PATH .)
        endif()
    elseif(IS_ABSOLUTE "${arg_PATH}")
        message(FATAL_ERROR "vex_build_info: PATH '${arg_PATH}' would tell of the machine that builds")
    endif()

    find_package(Git QUIET)
    _vex_ask_git(branch rev-parse --abbrev-ref HEAD)
    if(branch STREQUAL HEAD)
        _vex_ask_git(branch rev-parse --short HEAD)
        set(branch "detached at ${branch}")
    elseif(branch STREQUAL "")
        set(branch unknown)
    endif()
    _vex_ask_git(head rev-parse --git-path HEAD)
    if(head)
        cmake_path(ABSOLUTE_PATH head BASE_DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}")
        set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${head}")
    endif()

    _vex_literal(version "${arg_VERSION}")
    _vex_literal(path "${arg_PATH}")
    _vex_literal(branch "${branch}")
    string(TIMESTAMP date "%Y-%m-%d" UTC)
    string(TIMESTAMP time "%H:%M:%S" UTC)
    if(DEFINED ENV{SOURCE_DATE_EPOCH})
        set(source SOURCE_DATE_EPOCH)
    else()
        set(source "the first time that CMake ran with this version, path and branch")
    endif()
    set(template [[
// Written by vex_build_info(). Date and time: @source@.
#include <vex/BuildInfoData.h>

vex::BuildInfoData vex::buildInfo()
{
    return {QString::fromUtf8("@version@"), QString::fromUtf8("@path@"), QString::fromUtf8("@branch@"),
        QString::fromUtf8("@date@"), QString::fromUtf8("@time@")};
}
]])
    set(file "${CMAKE_CURRENT_BINARY_DIR}/${target}_build_info.cpp")
    if(NOT DEFINED ENV{SOURCE_DATE_EPOCH} AND EXISTS "${file}")
        file(READ "${file}" before)
        if(before MATCHES "\"([0-9-]+)\"[^\"]*\"([0-9:]+)\"[^\"]*$")
            set(new_date ${date})
            set(new_time ${time})
            set(date ${CMAKE_MATCH_1})
            set(time ${CMAKE_MATCH_2})
            string(CONFIGURE "${template}" same @ONLY)
            if(NOT same STREQUAL before)
                set(date ${new_date})
                set(time ${new_time})
            endif()
        endif()
    endif()
    file(CONFIGURE OUTPUT "${file}" CONTENT "${template}" @ONLY)
    target_sources(${target} PRIVATE "${file}")
    # of several modules in a process each has its own
    if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang" AND NOT CMAKE_CXX_COMPILER_FRONTEND_VARIANT STREQUAL MSVC)
        set_property(SOURCE "${file}" APPEND PROPERTY COMPILE_OPTIONS -fvisibility=hidden)
    endif()
endfunction()

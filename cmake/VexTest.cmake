find_package(Qt6 6.4 REQUIRED COMPONENTS Test)

# vex_add_test(unit FormulaParser): tests/unit/tst_FormulaParser.cpp as the test unit.FormulaParser.
#
# RUNNER PROGRAM: what runs it, given the test and its arguments; its exit code 77 stands for a skipped test.
#
# unit tests see the exported interface, internal ones every source, app ones the programs as processes.
function(vex_add_test kind name)
    cmake_parse_arguments(PARSE_ARGV 2 arg "" RUNNER "")
    set(target tst_${kind}_${name})
    add_executable(${target} ${CMAKE_CURRENT_SOURCE_DIR}/${kind}/tst_${name}.cpp)
    set_target_properties(${target} PROPERTIES AUTOMOC ON
        CXX_CLANG_TIDY "") # what moc writes follows no style of ours
    target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR}/tests/support
        ${PROJECT_SOURCE_DIR}/benchmarks/reference)
    target_link_libraries(${target} PRIVATE Qt6::Test vex_warnings)
    if(kind STREQUAL internal)
        target_link_libraries(${target} PRIVATE vex_objects)
        target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR}/src)
    else()
        target_link_libraries(${target} PRIVATE vex::vex)
    endif()
    if(arg_RUNNER)
        add_test(NAME ${kind}.${name} COMMAND ${arg_RUNNER} ${CMAKE_CROSSCOMPILING_EMULATOR} $<TARGET_FILE:${target}>)
        set_tests_properties(${kind}.${name} PROPERTIES SKIP_RETURN_CODE 77)
    else()
        add_test(NAME ${kind}.${name} COMMAND ${target})
    endif()
    set_tests_properties(${kind}.${name} PROPERTIES LABELS ${kind}
        TIMEOUT $<IF:$<BOOL:${CMAKE_CROSSCOMPILING_EMULATOR}>,900,120>
        SKIP_REGULAR_EXPRESSION "SKIP +: [A-Za-z_]+::initTestCase\\(\\)" # all of it
        ENVIRONMENT "LC_ALL=C.UTF-8;QT_LOGGING_RULES=;QT_FORCE_STDERR_LOGGING=1")
endfunction()

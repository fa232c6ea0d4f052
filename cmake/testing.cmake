# Test programs. Every test program is a GoogleTest binary; the list of them is
# written to <build>/test-binaries.txt, which tests/run_tests.py reads. Native
# builds run them directly, Windows builds (x64 and x86) run them under Wine.

macro(corvan_add_googletest)
  set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
  set(BUILD_GMOCK ON CACHE BOOL "" FORCE)
  set(gtest_force_shared_crt ON CACHE BOOL "" FORCE)
  add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
endmacro()

# corvan_test(<name> [X64_ONLY] SOURCES <files...> LIBS <targets...>)
# A Windows test program is built and run for both architectures; X64_ONLY
# leaves it out of the 32-bit build (the target exists, but is not built by
# default nor listed).
function(corvan_test name)
  cmake_parse_arguments(T "X64_ONLY" "" "SOURCES;LIBS" ${ARGN})
  add_executable(${name} ${T_SOURCES})
  target_link_libraries(${name} PRIVATE ${T_LIBS} GTest::gmock GTest::gtest_main)
  target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests/support)
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
  if(T_X64_ONLY AND WIN32 AND CMAKE_SIZEOF_VOID_P EQUAL 4)
    set_target_properties(${name} PROPERTIES EXCLUDE_FROM_ALL ON)
    return()
  endif()
  set_property(GLOBAL APPEND PROPERTY CORVAN_TEST_BINARIES "$<TARGET_FILE:${name}>")
endfunction()

function(corvan_write_test_list)
  get_property(binaries GLOBAL PROPERTY CORVAN_TEST_BINARIES)
  file(GENERATE OUTPUT ${CMAKE_BINARY_DIR}/test-binaries.txt CONTENT "$<JOIN:${binaries},\n>\n")
endfunction()

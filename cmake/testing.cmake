# Test programs. Every test program is a GoogleTest binary; the list of them is
# written to <build>/test-binaries.txt, which tests/run_tests.py reads. Native
# builds run them directly, Windows builds run them under Wine.

macro(corvan_add_googletest)
  set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
  set(BUILD_GMOCK ON CACHE BOOL "" FORCE)
  set(gtest_force_shared_crt ON CACHE BOOL "" FORCE)
  add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
endmacro()

# corvan_test(<name> SOURCES <files...> LIBS <targets...>)
function(corvan_test name)
  cmake_parse_arguments(T "" "" "SOURCES;LIBS" ${ARGN})
  add_executable(${name} ${T_SOURCES})
  target_link_libraries(${name} PRIVATE ${T_LIBS} GTest::gmock GTest::gtest_main)
  target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests/support)
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
  set_property(GLOBAL APPEND PROPERTY CORVAN_TEST_BINARIES "$<TARGET_FILE:${name}>")
endfunction()

function(corvan_write_test_list)
  get_property(binaries GLOBAL PROPERTY CORVAN_TEST_BINARIES)
  file(GENERATE OUTPUT ${CMAKE_BINARY_DIR}/test-binaries.txt CONTENT "$<JOIN:${binaries},\n>\n")
endfunction()

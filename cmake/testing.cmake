# Test executables: each one links GoogleTest and is listed for scripts/test.
find_package(GTest REQUIRED)
set_property(GLOBAL PROPERTY KAVO_TESTS "")

# Tests are compiled once and run for seconds: they share a precompiled GoogleTest and are not optimised.
option(KAVO_QUICK_TESTS "Compile tests for a short build" OFF)
if(KAVO_QUICK_TESTS)
  file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/test_pch.cpp CONTENT "int main() {}\n")
  add_executable(test_pch ${PROJECT_BINARY_DIR}/test_pch.cpp)
  target_link_libraries(test_pch PRIVATE GTest::gmock)
  target_compile_options(test_pch PRIVATE -O0 -g1)
  target_precompile_headers(test_pch PRIVATE <gmock/gmock.h> <gtest/gtest.h>)
endif()

# kavo_test(NAME SOURCE...): declares build/<preset>/bin/NAME.
function(kavo_test name)
  add_executable(${name} ${ARGN})
  target_link_libraries(${name} PRIVATE GTest::gmock_main)
  if(KAVO_QUICK_TESTS)
    target_compile_options(${name} PRIVATE -O0 -g1)
    target_precompile_headers(${name} REUSE_FROM test_pch)
  endif()
  set_property(GLOBAL APPEND PROPERTY KAVO_TESTS ${name})
endfunction()

# Writes the names of all tests, one a line, to the build tree.
function(kavo_write_test_list)
  get_property(tests GLOBAL PROPERTY KAVO_TESTS)
  list(JOIN tests "\n" lines)
  file(WRITE ${PROJECT_BINARY_DIR}/tests.list "${lines}\n")
endfunction()

# Test executables: each one links GoogleTest and is listed for scripts/test.
find_package(GTest REQUIRED)
set_property(GLOBAL PROPERTY KAVO_TESTS "")

# Tests are compiled once and run for seconds: they share a precompiled GoogleTest and are not optimised.
set(KAVO_TEST_OPTIONS -O0 -g1)
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/test_pch.cpp CONTENT "int main() {}\n")
add_executable(test_pch ${PROJECT_BINARY_DIR}/test_pch.cpp)
target_link_libraries(test_pch PRIVATE GTest::gmock)
target_compile_options(test_pch PRIVATE ${KAVO_TEST_OPTIONS})
target_precompile_headers(test_pch PRIVATE <gmock/gmock.h> <gtest/gtest.h>)

# Tests work in the build tree and find the project's files behind this link. Absolute paths in the compiler's arguments would
# make every checkout compile everything anew.
file(CREATE_LINK ${PROJECT_SOURCE_DIR} ${PROJECT_BINARY_DIR}/source SYMBOLIC)

# kavo_test(NAME [THREADS] SOURCE...): declares build/<preset>/bin/NAME. THREADS marks tests in which threads meet; the thread
# sanitizer has nothing to say about the others, so its build leaves them out.
function(kavo_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "THREADS" "" "")
  add_executable(${name} ${arg_UNPARSED_ARGUMENTS})
  target_link_libraries(${name} PRIVATE test_main)
  target_compile_options(${name} PRIVATE ${KAVO_TEST_OPTIONS})
  target_precompile_headers(${name} REUSE_FROM test_pch)
  if(KAVO_SANITIZE STREQUAL "thread" AND NOT arg_THREADS)
    set_target_properties(${name} PROPERTIES EXCLUDE_FROM_ALL ON)
    return()
  endif()
  set_property(GLOBAL APPEND PROPERTY KAVO_TESTS ${name})
endfunction()

# Writes the names of all tests, one a line, to the build tree.
function(kavo_write_test_list)
  get_property(tests GLOBAL PROPERTY KAVO_TESTS)
  list(JOIN tests "\n" lines)
  file(WRITE ${PROJECT_BINARY_DIR}/tests.list "${lines}\n")
endfunction()

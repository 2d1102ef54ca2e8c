# Test executables: each one links GoogleTest and is listed, with its arguments, for scripts/test.
find_package(GTest REQUIRED)
set_property(GLOBAL PROPERTY KAVO_TESTS "")

# kavo_test(NAME SOURCE...): declares build/<preset>/bin/NAME.
function(kavo_test name)
  add_executable(${name} ${ARGN})
  target_link_libraries(${name} PRIVATE GTest::gmock_main)
  set_property(GLOBAL APPEND PROPERTY KAVO_TESTS ${name})
endfunction()

# Writes the names of all tests, one a line, to the build tree.
function(kavo_write_test_list)
  get_property(tests GLOBAL PROPERTY KAVO_TESTS)
  list(JOIN tests "\n" lines)
  file(WRITE ${PROJECT_BINARY_DIR}/tests.list "${lines}\n")
endfunction()

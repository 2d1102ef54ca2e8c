# Language level, compiler and the options that every target shares.
option(KAVO_FUZZ "Build the fuzzers, and nothing but what they need, with clang" OFF)
if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND NOT KAVO_FUZZ)
  message(FATAL_ERROR
    "Motion.Kavo is built with g++ only: the identifiers of its data types are hashes of that compiler's own function "
    "text, so a component built by '${CMAKE_CXX_COMPILER_ID}' would not be understood by its host. Configure with "
    "-DCMAKE_CXX_COMPILER=g++.")
endif()

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

# Source paths in traces are those of the project, wherever it was checked out. ccache hands paths to the compiler as seen from the
# build tree when it keeps objects for several checkouts, so both spellings are cut.
file(RELATIVE_PATH kavo_way_to_sources ${PROJECT_BINARY_DIR} ${PROJECT_SOURCE_DIR}/)
add_compile_options(-fmacro-prefix-map=${PROJECT_SOURCE_DIR}/= -fmacro-prefix-map=${kavo_way_to_sources}=)
# The order of floating-point operations is part of the behaviour.
add_compile_options(-ffp-contract=off)

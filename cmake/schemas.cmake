# Turns FlatBuffers schemas into C++ accessors and binary schemas.

# kavo_schema_headers(TARGET OUT_DIR SCHEMA... [EMBED]): an interface library whose includes are the generated headers;
# EMBED adds the binary schema to each of them.
function(kavo_schema_headers target out_dir)
  cmake_parse_arguments(PARSE_ARGV 2 arg "EMBED" "" "")
  set(embed)
  if(arg_EMBED)
    set(embed --schema --bfbs-comments --bfbs-gen-embed)
  endif()
  set(headers)
  foreach(schema IN LISTS arg_UNPARSED_ARGUMENTS)
    cmake_path(GET schema STEM name)
    set(header ${out_dir}/${name}_generated.h)
    add_custom_command(
      OUTPUT ${header}
      COMMAND flatbuffers::flatc --cpp --cpp-std c++17 --scoped-enums --gen-object-api --no-warnings ${embed} -o ${out_dir} ${schema}
      DEPENDS ${schema}
      COMMENT "flatc ${name}_generated.h"
      VERBATIM)
    list(APPEND headers ${header})
  endforeach()
  add_custom_target(${target}_generate DEPENDS ${headers})
  add_library(${target} INTERFACE)
  add_dependencies(${target} ${target}_generate)
  cmake_path(GET out_dir PARENT_PATH parent)
  cmake_path(GET parent PARENT_PATH include_root)
  target_include_directories(${target} SYSTEM INTERFACE ${include_root})
endfunction()

# kavo_binary_schemas(TARGET OUT_DIR SCHEMA...): builds OUT_DIR/<name>.bfbs for each schema.
function(kavo_binary_schemas target out_dir)
  set(binaries)
  foreach(schema IN LISTS ARGN)
    cmake_path(GET schema STEM name)
    set(binary ${out_dir}/${name}.bfbs)
    add_custom_command(
      OUTPUT ${binary}
      COMMAND flatbuffers::flatc --binary --schema --bfbs-comments -o ${out_dir} ${schema}
      DEPENDS ${schema}
      COMMENT "flatc ${name}.bfbs"
      VERBATIM)
    list(APPEND binaries ${binary})
  endforeach()
  add_custom_target(${target} ALL DEPENDS ${binaries})
endfunction()

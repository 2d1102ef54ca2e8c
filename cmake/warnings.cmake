# Warnings are errors in every target of the project. The compiler of the fuzzers has other opinions, which nobody asked for.
add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wformat=2)
if(NOT KAVO_FUZZ)
  add_compile_options(-Werror)
endif()

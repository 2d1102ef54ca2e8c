# Warnings are errors in every target of the project.
add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wformat=2 -Werror)

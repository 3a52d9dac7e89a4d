# The warnings under which every target of the project compiles.
add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion)
if(URLDB_WERROR)
  add_compile_options(-Werror)
endif()

# KAVO_SANITIZE names the sanitizers of a build tree, as in "address,undefined" or "thread".
set(KAVO_SANITIZE "" CACHE STRING "Sanitizers, separated by commas")
if(KAVO_SANITIZE)
  add_compile_options(-fsanitize=${KAVO_SANITIZE} -fno-omit-frame-pointer -O1 -g1)
  add_link_options(-fsanitize=${KAVO_SANITIZE})
  if(KAVO_SANITIZE MATCHES undefined)
    add_compile_options(-fno-sanitize-recover=undefined)
  endif()
endif()

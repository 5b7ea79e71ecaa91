# SNMPDISCOVERY_SANITIZE: a list for -fsanitize= that the whole build shares, for example
# "address;undefined" or "thread". A finding ends the process (no recovery), so that a test fails.

set(SNMPDISCOVERY_SANITIZE "" CACHE STRING "Sanitizers to build with (address;undefined or thread)")

if(SNMPDISCOVERY_SANITIZE)
  list(JOIN SNMPDISCOVERY_SANITIZE "," sanitizers)
  add_compile_options(-fsanitize=${sanitizers} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${sanitizers})
endif()

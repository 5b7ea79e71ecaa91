# snmpdiscovery_warnings(TARGET): the warnings that every target of this project is compiled with.
# The presets make them errors. Elsewhere they are not, so that a compiler that is newer than those
# that the project is tested with does not break a user's build.

option(SNMPDISCOVERY_WERROR "Treat compiler warnings as errors" OFF)

# -Wuseless-cast only where pointers have 64 bits: long, size_t and oid are as wide as int on 32 bits,
# so that a conversion that 64 bits need is none there.
function(snmpdiscovery_warnings target)
  target_compile_options(${target} PRIVATE
      -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast
      -Wcast-align -Wcast-qual -Wnon-virtual-dtor -Woverloaded-virtual -Wnull-dereference
      -Wformat=2 -Wimplicit-fallthrough -Wundef -Wunused
      $<$<CXX_COMPILER_ID:GNU>:-Wduplicated-cond -Wduplicated-branches -Wlogical-op>
      $<$<AND:$<CXX_COMPILER_ID:GNU>,$<EQUAL:${CMAKE_SIZEOF_VOID_P},8>>:-Wuseless-cast>
      $<$<BOOL:${SNMPDISCOVERY_WERROR}>:-Werror>)
endfunction()

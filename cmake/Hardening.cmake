# What Debian's packages are hardened with, so that a fault in the tool or in what it is linked with
# is harder to turn into a foothold: position-independent code, all relocations done at start and
# read-only from then on, a stack that is not executable, canaries on it, and calls of the C library
# that check the room that they write to. tests/app/hardening.py looks for each in the executable.

option(SNMPDISCOVERY_HARDENING "Harden what is built (see cmake/Hardening.cmake)" ON)

set(CMAKE_POSITION_INDEPENDENT_CODE ON)

if(SNMPDISCOVERY_HARDENING)
  include(CheckPIESupported)
  check_pie_supported(LANGUAGES CXX)
  add_compile_options(-fstack-protector-strong)

  # The C library checks only in optimised code; the sanitizers have checks of their own, and these
  # hide calls from them.
  if(NOT SNMPDISCOVERY_SANITIZE)
    add_compile_options("$<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")
  endif()

  # The linkers for ELF; those of macOS do all this without being told.
  if(NOT APPLE)
    add_link_options(-Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
  endif()
endif()

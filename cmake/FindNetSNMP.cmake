# Finds Net-SNMP's client library by asking its own net-snmp-config, which knows where the library
# was installed and which definitions its headers want.
#
# Input:   NETSNMP_CONFIG   the program to ask (found on the PATH unless set)
# Result:  NetSNMP_FOUND, NetSNMP_VERSION, and the imported target NetSNMP::NetSNMP

find_program(NETSNMP_CONFIG net-snmp-config
    HINTS /opt/homebrew/opt/net-snmp/bin /usr/local/opt/net-snmp/bin
    DOC "Net-SNMP's configuration program")

set(_netsnmp_answered FALSE)
if(NETSNMP_CONFIG)
  set(_netsnmp_answered TRUE)
  foreach(_question version base-cflags netsnmp-libs external-libs)
    execute_process(COMMAND ${NETSNMP_CONFIG} --${_question}
        OUTPUT_VARIABLE _netsnmp_${_question} OUTPUT_STRIP_TRAILING_WHITESPACE
        RESULT_VARIABLE _netsnmp_result)
    if(NOT _netsnmp_result EQUAL 0)
      set(_netsnmp_answered FALSE)
    endif()
  endforeach()
  set(NetSNMP_VERSION ${_netsnmp_version})

  # Of the compiler flags only what the headers need: where they are, and the definitions that
  # change their declarations. The rest (optimisation, hardening) is how Net-SNMP itself was built.
  separate_arguments(_netsnmp_cflags UNIX_COMMAND "${_netsnmp_base-cflags}")
  set(_netsnmp_include_hints "")
  set(_netsnmp_definitions "")
  foreach(_flag IN LISTS _netsnmp_cflags)
    if(_flag MATCHES "^-I(/.+)$")
      list(APPEND _netsnmp_include_hints ${CMAKE_MATCH_1})
    elseif(_flag MATCHES "^-D(NETSNMP_.+)$")
      list(APPEND _netsnmp_definitions ${CMAKE_MATCH_1})
    endif()
  endforeach()
  list(REMOVE_DUPLICATES _netsnmp_definitions)

  separate_arguments(_netsnmp_libs UNIX_COMMAND "${_netsnmp_netsnmp-libs}")
  set(_netsnmp_library_hints "")
  foreach(_flag IN LISTS _netsnmp_libs)
    if(_flag MATCHES "^-L(/.+)$")
      list(APPEND _netsnmp_library_hints ${CMAKE_MATCH_1})
    endif()
  endforeach()

  separate_arguments(_netsnmp_external UNIX_COMMAND "${_netsnmp_external-libs}")
  set(_netsnmp_needed "")
  foreach(_flag IN LISTS _netsnmp_external)
    if(_flag MATCHES "^-l(.+)$")
      list(APPEND _netsnmp_needed ${CMAKE_MATCH_1})
    endif()
  endforeach()

  find_path(NetSNMP_INCLUDE_DIR net-snmp/net-snmp-config.h HINTS ${_netsnmp_include_hints})
  find_library(NetSNMP_LIBRARY netsnmp HINTS ${_netsnmp_library_hints})
endif()

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(NetSNMP
    REQUIRED_VARS NETSNMP_CONFIG NetSNMP_LIBRARY NetSNMP_INCLUDE_DIR _netsnmp_answered
    VERSION_VAR NetSNMP_VERSION)

if(NetSNMP_FOUND AND NOT TARGET NetSNMP::NetSNMP)
  add_library(NetSNMP::NetSNMP UNKNOWN IMPORTED)
  set_target_properties(NetSNMP::NetSNMP PROPERTIES
      IMPORTED_LOCATION ${NetSNMP_LIBRARY}
      INTERFACE_INCLUDE_DIRECTORIES ${NetSNMP_INCLUDE_DIR}
      INTERFACE_COMPILE_DEFINITIONS "${_netsnmp_definitions}")
  # A shared library names what it needs itself.
  if(NetSNMP_LIBRARY MATCHES "\\.a$")
    set_property(TARGET NetSNMP::NetSNMP PROPERTY INTERFACE_LINK_LIBRARIES ${_netsnmp_needed})
  endif()
endif()

mark_as_advanced(NETSNMP_CONFIG NetSNMP_INCLUDE_DIR NetSNMP_LIBRARY)

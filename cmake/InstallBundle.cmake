# The component "bundle" (see InstallTool.cmake and scripts/bundle).
#
# Its executables differ from the others in their run path alone. On ELF systems that is a DT_RPATH:
# unlike the newer DT_RUNPATH it also holds for what the libraries need in turn, and it is looked at
# before LD_LIBRARY_PATH, so that nothing of the system can come in between. A library with a
# DT_RUNPATH of its own would be outside that rule; scripts/bundle refuses one.

# snmpdiscovery_bundled(target name source library)
function(snmpdiscovery_bundled target name source library)
  add_executable(${target} ${source})
  target_link_libraries(${target} PRIVATE ${library})
  snmpdiscovery_warnings(${target})
  set_target_properties(${target} PROPERTIES
      OUTPUT_NAME ${name}
      RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bundle)
  if(APPLE)
    set_target_properties(${target} PROPERTIES INSTALL_RPATH @executable_path)
  else()
    set_target_properties(${target} PROPERTIES INSTALL_RPATH $ORIGIN)
    target_link_options(${target} PRIVATE -Wl,--disable-new-dtags)
  endif()
endfunction()
snmpdiscovery_bundled(SNMPDiscovery_bundled SNMPDiscovery app/main.cpp app)
snmpdiscovery_bundled(snmp-inventory_bundled snmp-inventory inventory/main.cpp inventory)
# One target makes both.
add_dependencies(SNMPDiscovery_bundled snmp-inventory_bundled)

# What every system has: the C and C++ runtime, the loader, and on macOS the system's own libraries.
set(system_libraries
    [[^ld-linux.*]] [[^ld64\.so.*]] [[^linux-vdso.*]]
    [[^lib(c|m|dl|rt|pthread|resolv|util|nsl|gcc_s|stdc\+\+|atomic)\.so.*]]
    [[^/usr/lib/lib.*\.dylib$]] [[^/System/.*]])

install(TARGETS SNMPDiscovery_bundled snmp-inventory_bundled
    RUNTIME_DEPENDENCY_SET snmpdiscovery_carried
    RUNTIME DESTINATION . COMPONENT bundle EXCLUDE_FROM_ALL)
install(RUNTIME_DEPENDENCY_SET snmpdiscovery_carried
    PRE_EXCLUDE_REGEXES ${system_libraries}
    LIBRARY DESTINATION . COMPONENT bundle EXCLUDE_FROM_ALL
    FRAMEWORK DESTINATION . COMPONENT bundle EXCLUDE_FROM_ALL)
# For the PATH, where a link to the executable would not do.
set(snmpdiscovery_root_from_bin ..)
set(snmpdiscovery_private_dir .)
configure_file(packaging/launcher.in ${PROJECT_BINARY_DIR}/bundle/launcher/SNMPDiscovery @ONLY)
install(PROGRAMS ${PROJECT_BINARY_DIR}/bundle/launcher/SNMPDiscovery
    DESTINATION bin COMPONENT bundle EXCLUDE_FROM_ALL)
file(CREATE_LINK ../snmp-inventory
    ${PROJECT_BINARY_DIR}/bundle/launcher/snmp-inventory SYMBOLIC)
install(FILES ${PROJECT_BINARY_DIR}/bundle/launcher/snmp-inventory
    DESTINATION bin COMPONENT bundle EXCLUDE_FROM_ALL)
install(FILES ${mib_files} DESTINATION mibs COMPONENT bundle EXCLUDE_FROM_ALL)

# On macOS each library names the others by the path that it was built for, and a change breaks its
# signature.
if(APPLE)
  install(SCRIPT ${PROJECT_SOURCE_DIR}/cmake/RelocateOnMacOS.cmake
      COMPONENT bundle EXCLUDE_FROM_ALL)
endif()

snmpdiscovery_install_documents(bundle doc EXCLUDE_FROM_ALL)
install(FILES ${manual_pages} DESTINATION doc
    COMPONENT bundle EXCLUDE_FROM_ALL)

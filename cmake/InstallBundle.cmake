# The component "bundle" (see InstallTool.cmake and scripts/bundle).
#
# Built for this machine, its executables differ from the others in their run path alone. That is a
# DT_RPATH: unlike the newer DT_RUNPATH it also holds for what the libraries need in turn, and it is
# looked at before LD_LIBRARY_PATH, so that nothing of the system can come in between. A library with a
# DT_RUNPATH of its own would be outside that rule; scripts/bundle refuses one.
#
# Built for another system (scripts/cross), the executables need no run path: they are static, or were
# linked with libraries that are named by @executable_path. SNMPDISCOVERY_CARRIED lists those.

# snmpdiscovery_bundled(target name source library)
function(snmpdiscovery_bundled target name source library)
  add_executable(${target} ${source})
  target_link_libraries(${target} PRIVATE ${library})
  snmpdiscovery_warnings(${target})
  set_target_properties(${target} PROPERTIES
      OUTPUT_NAME ${name}
      RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bundle
      INSTALL_RPATH $ORIGIN)
  # Linked without debugging information: the build ID is a hash of all that is linked, and that
  # information holds paths, which a compiler cache may have written in a way of its own.
  target_link_options(${target} PRIVATE -Wl,--disable-new-dtags -Wl,--strip-all)
endfunction()

if(CMAKE_CROSSCOMPILING)
  install(TARGETS SNMPDiscovery snmp-inventory
      RUNTIME DESTINATION . COMPONENT bundle EXCLUDE_FROM_ALL)
  install(PROGRAMS ${SNMPDISCOVERY_CARRIED} DESTINATION . COMPONENT bundle EXCLUDE_FROM_ALL)
elseif(NOT APPLE)
  snmpdiscovery_bundled(SNMPDiscovery_bundled SNMPDiscovery app/main.cpp app)
  snmpdiscovery_bundled(snmp-inventory_bundled snmp-inventory inventory/main.cpp inventory)
  # One target makes both.
  add_dependencies(SNMPDiscovery_bundled snmp-inventory_bundled)

  # What every system has: the C and C++ runtime and the loader.
  set(system_libraries
      [[^ld-linux.*]] [[^ld64\.so.*]] [[^linux-vdso.*]]
      [[^lib(c|m|dl|rt|pthread|resolv|util|nsl|gcc_s|stdc\+\+|atomic)\.so.*]])

  install(TARGETS SNMPDiscovery_bundled snmp-inventory_bundled
      RUNTIME_DEPENDENCY_SET snmpdiscovery_carried
      RUNTIME DESTINATION . COMPONENT bundle EXCLUDE_FROM_ALL)
  install(RUNTIME_DEPENDENCY_SET snmpdiscovery_carried
      PRE_EXCLUDE_REGEXES ${system_libraries}
      LIBRARY DESTINATION . COMPONENT bundle EXCLUDE_FROM_ALL)
endif()

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

install(DIRECTORY packaging/licences DESTINATION . COMPONENT bundle EXCLUDE_FROM_ALL)
snmpdiscovery_install_documents(bundle doc EXCLUDE_FROM_ALL)
install(FILES ${manual_pages} DESTINATION doc
    COMPONENT bundle EXCLUDE_FROM_ALL)

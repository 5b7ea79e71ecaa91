# How the two programs are installed.
#
# Component "runtime": the usual folders of a system. The executables and the MIB modules have a
# private folder, where snmp-inventory finds the tool and both find the modules. A launcher on the
# PATH starts the tool there: it looks for the modules beside the path that it was started by, so a
# link to it would not do. For snmp-inventory, which asks the system where it is, a link does.
#
# Component "bundle": one folder that can be moved anywhere, with the executables, the modules and
# the libraries of POCO and Net-SNMP side by side. scripts/bundle makes it; `cmake --install`
# without a component leaves it out.

set(snmpdiscovery_private_dir ${CMAKE_INSTALL_LIBEXECDIR}/SNMPDiscovery)
file(GLOB mib_files CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/mibs/*.txt)
set(documents README.md CHANGELOG.md SECURITY.md LICENSE)
file(GLOB guides CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/docs/*.md ${PROJECT_SOURCE_DIR}/docs/*.json
    ${PROJECT_SOURCE_DIR}/docs/*.png)
list(FILTER guides EXCLUDE REGEX "/reference\\.md$")  # a page of the generated reference

# snmpdiscovery_install_documents(component folder [more options of install()])
# What users and integrators read; links between the documents lead where they do in the sources.
function(snmpdiscovery_install_documents component folder)
  list(TRANSFORM documents PREPEND ${PROJECT_SOURCE_DIR}/)
  install(FILES ${documents} DESTINATION ${folder} COMPONENT ${component} ${ARGN})
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs/examples
      DESTINATION ${folder}/docs COMPONENT ${component} ${ARGN})
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/deploy
      DESTINATION ${folder} COMPONENT ${component} ${ARGN})
  install(FILES ${guides} DESTINATION ${folder}/docs COMPONENT ${component} ${ARGN})
  install(FILES ${PROJECT_SOURCE_DIR}/mibs/README.md
      DESTINATION ${folder}/mibs COMPONENT ${component} ${ARGN})
endfunction()

# --- runtime

if(BUILD_SHARED_LIBS)
  file(RELATIVE_PATH libraries /prefix/${snmpdiscovery_private_dir} /prefix/${CMAKE_INSTALL_LIBDIR})
  if(APPLE)
    set(origin @executable_path)
  else()
    set(origin $ORIGIN)
  endif()
  set_target_properties(SNMPDiscovery snmp-inventory PROPERTIES
      INSTALL_RPATH ${origin}/${libraries})
endif()
install(TARGETS SNMPDiscovery snmp-inventory
    RUNTIME DESTINATION ${snmpdiscovery_private_dir} COMPONENT runtime)
install(FILES ${mib_files} DESTINATION ${snmpdiscovery_private_dir}/mibs COMPONENT runtime)

file(RELATIVE_PATH snmpdiscovery_root_from_bin /prefix/${CMAKE_INSTALL_BINDIR} /prefix)
string(REGEX REPLACE "/$" "" snmpdiscovery_root_from_bin "${snmpdiscovery_root_from_bin}")
configure_file(packaging/launcher.in ${PROJECT_BINARY_DIR}/launcher/SNMPDiscovery @ONLY)
install(PROGRAMS ${PROJECT_BINARY_DIR}/launcher/SNMPDiscovery
    DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)

file(CREATE_LINK
    ${snmpdiscovery_root_from_bin}/${snmpdiscovery_private_dir}/snmp-inventory
    ${PROJECT_BINARY_DIR}/launcher/snmp-inventory SYMBOLIC)
install(FILES ${PROJECT_BINARY_DIR}/launcher/snmp-inventory
    DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)

set(manual_pages)
foreach(program SNMPDiscovery snmp-inventory)
  configure_file(packaging/${program}.1.in ${PROJECT_BINARY_DIR}/${program}.1 @ONLY)
  list(APPEND manual_pages ${PROJECT_BINARY_DIR}/${program}.1)
endforeach()
install(FILES ${manual_pages} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT runtime)
set(completions ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
install(FILES packaging/completion.bash RENAME SNMPDiscovery
    DESTINATION ${completions} COMPONENT runtime)
install(FILES packaging/inventory-completion.bash RENAME snmp-inventory
    DESTINATION ${completions} COMPONENT runtime)
snmpdiscovery_install_documents(runtime ${CMAKE_INSTALL_DATADIR}/doc/snmpdiscovery)

# Not CMAKE_INSTALL_LIBDIR: systemd looks into lib, whatever the architecture.
if(CMAKE_SYSTEM_NAME STREQUAL "Linux")
  set(units deploy/systemd/snmpdiscovery.service deploy/systemd/snmpdiscovery.timer)
  install(FILES ${units} DESTINATION lib/systemd/system COMPONENT runtime)
  install(FILES deploy/systemd/sysusers.conf RENAME snmpdiscovery.conf
      DESTINATION lib/sysusers.d COMPONENT runtime)
endif()

# --- bundle

include(InstallBundle)

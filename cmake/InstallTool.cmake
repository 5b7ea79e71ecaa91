# How the two programs are installed.
#
# Component "runtime": the usual folders of a system. The executables and the MIB modules have a
# private folder, where snmp-inventory finds the tool and both find the modules. A launcher on the
# PATH starts the tool there: it looks for the modules beside the path that it was started by, so a
# link to it would not do. For snmp-inventory, which asks the system where it is, a link does.
#
# Component "settings": the administrator's settings in /etc and, beside the executable, where the tool
# looks for them, a link to them. Packages for /usr take it in; `cmake --install` without a component
# leaves it out.
#
# Component "bundle": one folder that can be moved anywhere, with the executables, the modules and
# the libraries of POCO and Net-SNMP side by side. scripts/bundle makes it; `cmake --install`
# without a component leaves it out.

set(snmpdiscovery_private_dir ${CMAKE_INSTALL_LIBEXECDIR}/SNMPDiscovery)
file(GLOB mib_files CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/mibs/*.txt)
set(documents README.md CHANGELOG.md CONTRIBUTING.md SECURITY.md LICENSE)
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
  foreach(part IN ITEMS bench fuzz lab mibs tests)
    file(GLOB pictures CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${part}/*.svg)
    install(FILES ${PROJECT_SOURCE_DIR}/${part}/README.md ${pictures}
        DESTINATION ${folder}/${part} COMPONENT ${component} ${ARGN})
  endforeach()
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

# What foreign code was compiled in, in the form of scripts/describe, and its licence.
get_directory_property(cli11_version DIRECTORY inventory DEFINITION CLI11_VERSION)
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/compiled-in
    CONTENT "- CLI11 ${cli11_version} generic BSD-3-Clause\n")
install(DIRECTORY packaging/licences
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/snmpdiscovery COMPONENT runtime)

# --- settings

set(settings_folder /etc/snmpdiscovery)
install(FILES packaging/SNMPDiscovery.properties
    DESTINATION ${settings_folder} COMPONENT settings EXCLUDE_FROM_ALL)
set(settings_link ${PROJECT_BINARY_DIR}/settings/SNMPDiscovery.properties)
file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/settings)
file(CREATE_LINK ${settings_folder}/SNMPDiscovery.properties ${settings_link} SYMBOLIC)
install(FILES ${settings_link}
    DESTINATION ${snmpdiscovery_private_dir} COMPONENT settings EXCLUDE_FROM_ALL)

# --- bundle

include(InstallBundle)

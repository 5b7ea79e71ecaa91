# How the tool is installed.
#
# Component "runtime": the usual folders of a system. The executable and its MIB modules have a
# private folder, and a launcher on the PATH starts it there: the tool looks for the modules beside
# the path that it was started by, so a link to it would not do.
#
# Component "bundle": one folder that can be moved anywhere, with the executable, its modules and
# the libraries of POCO and Net-SNMP side by side. scripts/bundle makes it; `cmake --install`
# without a component leaves it out.

set(snmpdiscovery_private_dir ${CMAKE_INSTALL_LIBEXECDIR}/SNMPDiscovery)
file(GLOB mib_files CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/mibs/*.txt)
set(documents README.md CHANGELOG.md SECURITY.md LICENSE)
file(GLOB guides CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/docs/*.md ${PROJECT_SOURCE_DIR}/docs/*.json)
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
    set_target_properties(SNMPDiscovery PROPERTIES INSTALL_RPATH @executable_path/${libraries})
  else()
    set_target_properties(SNMPDiscovery PROPERTIES INSTALL_RPATH $ORIGIN/${libraries})
  endif()
endif()
install(TARGETS SNMPDiscovery
    RUNTIME DESTINATION ${snmpdiscovery_private_dir} COMPONENT runtime)
install(FILES ${mib_files} DESTINATION ${snmpdiscovery_private_dir}/mibs COMPONENT runtime)

file(RELATIVE_PATH snmpdiscovery_root_from_bin /prefix/${CMAKE_INSTALL_BINDIR} /prefix)
string(REGEX REPLACE "/$" "" snmpdiscovery_root_from_bin "${snmpdiscovery_root_from_bin}")
configure_file(packaging/launcher.in ${PROJECT_BINARY_DIR}/launcher/SNMPDiscovery @ONLY)
install(PROGRAMS ${PROJECT_BINARY_DIR}/launcher/SNMPDiscovery
    DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)

configure_file(packaging/SNMPDiscovery.1.in ${PROJECT_BINARY_DIR}/SNMPDiscovery.1 @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/SNMPDiscovery.1
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT runtime)
install(FILES packaging/completion.bash RENAME SNMPDiscovery
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT runtime)
snmpdiscovery_install_documents(runtime ${CMAKE_INSTALL_DATADIR}/doc/snmpdiscovery)

# --- bundle

include(InstallBundle)

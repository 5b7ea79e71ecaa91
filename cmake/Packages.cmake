# RPM and archive, made by `cpack` from the same install rules (scripts/package). The Debian package
# is made by Debian's own tools: packaging/debian.

set(CPACK_GENERATOR "TGZ;RPM")
set(CPACK_PACKAGE_NAME snmpdiscovery)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY ${PROJECT_DESCRIPTION})
set(CPACK_PACKAGE_VENDOR "The SNMPDiscovery authors")
set(CPACK_PACKAGE_CONTACT ${CPACK_PACKAGE_VENDOR})
set(CPACK_PACKAGE_FILE_NAME
    snmpdiscovery-${PROJECT_VERSION}-${CMAKE_SYSTEM_NAME}-${CMAKE_SYSTEM_PROCESSOR})
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_CHECKSUM SHA256)

# The tool alone, in one package.
set(CPACK_COMPONENTS_ALL runtime)
if(BUILD_SHARED_LIBS)
  list(APPEND CPACK_COMPONENTS_ALL libraries)
endif()
set(CPACK_COMPONENTS_GROUPING ALL_COMPONENTS_IN_ONE)
set(CPACK_ARCHIVE_COMPONENT_INSTALL ON)
set(CPACK_RPM_COMPONENT_INSTALL ON)

set(CPACK_RPM_PACKAGE_LICENSE MIT)
set(CPACK_RPM_PACKAGE_GROUP Applications/Internet)
set(CPACK_RPM_PACKAGE_AUTOREQ ON)
set(CPACK_RPM_PACKAGE_RELOCATABLE ON)
# Folders of the system's own.
set(CPACK_RPM_EXCLUDE_FROM_AUTO_FILELIST_ADDITION
    /usr/libexec /usr/share/bash-completion /usr/share/bash-completion/completions
    /usr/share/man /usr/share/man/man1
    /usr/lib/systemd /usr/lib/systemd/system /usr/lib/sysusers.d)
set(CPACK_RPM_POST_INSTALL_SCRIPT_FILE ${PROJECT_SOURCE_DIR}/packaging/rpm/post-install)
set(CPACK_RPM_PRE_UNINSTALL_SCRIPT_FILE ${PROJECT_SOURCE_DIR}/packaging/rpm/pre-remove)

include(CPack)

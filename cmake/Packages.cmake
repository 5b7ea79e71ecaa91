# The RPM package, made by `cpack` from the same install rules (scripts/package). The Debian package is
# made by Debian's own tools: packaging/debian.

set(SNMPDISCOVERY_HOMEPAGE "" CACHE STRING "Address of the project, for packages")
set(SNMPDISCOVERY_PACKAGE_RELEASE 1 CACHE STRING "Release of the RPM package")

# The description is that of the Debian package, whose lines begin with a blank; " ." is a blank line.
file(STRINGS ${PROJECT_SOURCE_DIR}/packaging/debian/control description REGEX "^ ")
list(TRANSFORM description REPLACE "^ (\\.$)?" "")
list(JOIN description "\n" description)

set(CPACK_GENERATOR RPM)
set(CPACK_PACKAGE_NAME snmpdiscovery)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY ${PROJECT_DESCRIPTION})
set(CPACK_PACKAGE_VENDOR "The SNMPDiscovery authors")
set(CPACK_PACKAGE_CONTACT ${CPACK_PACKAGE_VENDOR})
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)

# The programs alone, in one package.
set(CPACK_COMPONENTS_ALL runtime settings)
if(BUILD_SHARED_LIBS)
  list(APPEND CPACK_COMPONENTS_ALL libraries)
endif()
set(CPACK_COMPONENTS_GROUPING ALL_COMPONENTS_IN_ONE)
set(CPACK_RPM_COMPONENT_INSTALL ON)

set(CPACK_RPM_FILE_NAME RPM-DEFAULT)
set(CPACK_RPM_PACKAGE_RELEASE ${SNMPDISCOVERY_PACKAGE_RELEASE})
set(CPACK_RPM_PACKAGE_DESCRIPTION ${description})
set(CPACK_RPM_PACKAGE_URL ${SNMPDISCOVERY_HOMEPAGE})
set(CPACK_RPM_PACKAGE_LICENSE "MIT AND BSD-3-Clause")
set(CPACK_RPM_PACKAGE_GROUP Applications/Internet)
set(CPACK_RPM_PACKAGE_AUTOREQ ON)
set(CPACK_PACKAGE_RELOCATABLE OFF)  # the link to the settings leads to /etc
set(CPACK_RPM_USER_FILELIST "%config(noreplace) /etc/snmpdiscovery/SNMPDiscovery.properties")
# Folders of the system's own.
set(CPACK_RPM_EXCLUDE_FROM_AUTO_FILELIST_ADDITION
    /etc /usr/libexec /usr/share/bash-completion /usr/share/bash-completion/completions
    /usr/share/man /usr/share/man/man1
    /usr/lib/systemd /usr/lib/systemd/system /usr/lib/sysusers.d)
set(CPACK_RPM_POST_INSTALL_SCRIPT_FILE ${PROJECT_SOURCE_DIR}/packaging/rpm/post-install)
set(CPACK_RPM_PRE_UNINSTALL_SCRIPT_FILE ${PROJECT_SOURCE_DIR}/packaging/rpm/pre-remove)
# The time is SOURCE_DATE_EPOCH's and the host nobody's, so that the same input gives the same octets.
set(CPACK_RPM_SPEC_MORE_DEFINE "%define use_source_date_epoch_as_buildtime 1
%define clamp_mtime_to_source_date_epoch 1
%define _buildhost localhost")

include(CPack)

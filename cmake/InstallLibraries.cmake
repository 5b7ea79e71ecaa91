# How the two libraries are installed, for programs that build on them.
#
# Components: "development" holds the headers, static libraries, CMake package and pkg-config files;
# "libraries" the shared libraries themselves, and is empty in a static build. BUILD_SHARED_LIBS
# chooses the kind. A static and a shared build may be installed to the same prefix: each brings its
# own files, and the CMake package offers both.

include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

option(BUILD_SHARED_LIBS "Build the libraries shared instead of static" OFF)

set(snmpdiscovery_include_dir ${CMAKE_INSTALL_INCLUDEDIR}/SNMPDiscovery)
set(snmpdiscovery_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/SNMPDiscovery)
if(BUILD_SHARED_LIBS)
  set(snmpdiscovery_kind shared)
else()
  set(snmpdiscovery_kind static)
endif()

# Before 1.0.0 any minor release may change an interface, afterwards only a major one. That is a
# promise about sources. The headers hold inline functions and templates, which programs compile
# into themselves, so a program fits the shared libraries of one minor release only: each has a
# soname of its own.
if(PROJECT_VERSION_MAJOR EQUAL 0)
  set(snmpdiscovery_compatibility SameMinorVersion)
else()
  set(snmpdiscovery_compatibility SameMajorVersion)
endif()
set(snmpdiscovery_soversion ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})

# snmpdiscovery_install_library(TARGET): installs the library, its file set of headers, its part of
# the CMake package and packaging/snmpdiscovery-TARGET.pc.in. The file gets the project's name in
# front, because "libsnmp" alone is a name of Net-SNMP's.
function(snmpdiscovery_install_library target)
  # The same name for a project that takes the sources in (add_subdirectory).
  add_library(SNMPDiscovery::${target} ALIAS ${target})
  set_target_properties(${target} PROPERTIES
      OUTPUT_NAME snmpdiscovery-${target}
      VERSION ${PROJECT_VERSION}
      SOVERSION ${snmpdiscovery_soversion})
  install(TARGETS ${target} EXPORT SNMPDiscovery-${target}
      ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
      LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT libraries
              NAMELINK_COMPONENT development
      FILE_SET HEADERS DESTINATION ${snmpdiscovery_include_dir} COMPONENT development)
  install(EXPORT SNMPDiscovery-${target}
      FILE SNMPDiscovery-${target}-${snmpdiscovery_kind}.cmake
      NAMESPACE SNMPDiscovery::
      DESTINATION ${snmpdiscovery_package_dir}
      COMPONENT development)

  # The prefix in the file is relative to it, so that the installed tree can be moved.
  set(pc_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
  file(RELATIVE_PATH pc_prefix /prefix/${pc_dir} /prefix)
  cmake_path(SET pc_prefix NORMALIZE ${pc_prefix})
  string(REGEX REPLACE "/$" "" pc_prefix "${pc_prefix}")
  get_target_property(pc_definitions NetSNMP::NetSNMP INTERFACE_COMPILE_DEFINITIONS)
  list(TRANSFORM pc_definitions PREPEND "-D")
  list(JOIN pc_definitions " " pc_definitions)
  configure_file(${PROJECT_SOURCE_DIR}/packaging/snmpdiscovery-${target}.pc.in
      ${PROJECT_BINARY_DIR}/snmpdiscovery-${target}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/snmpdiscovery-${target}.pc
      DESTINATION ${pc_dir} COMPONENT development)
endfunction()

configure_package_config_file(
    ${PROJECT_SOURCE_DIR}/cmake/SNMPDiscoveryConfig.cmake.in
    ${PROJECT_BINARY_DIR}/SNMPDiscoveryConfig.cmake
    INSTALL_DESTINATION ${snmpdiscovery_package_dir})
write_basic_package_version_file(
    ${PROJECT_BINARY_DIR}/SNMPDiscoveryConfigVersion.cmake
    COMPATIBILITY ${snmpdiscovery_compatibility})
install(
    FILES ${PROJECT_BINARY_DIR}/SNMPDiscoveryConfig.cmake
          ${PROJECT_BINARY_DIR}/SNMPDiscoveryConfigVersion.cmake
          ${PROJECT_SOURCE_DIR}/cmake/FindNetSNMP.cmake
    DESTINATION ${snmpdiscovery_package_dir} COMPONENT development)

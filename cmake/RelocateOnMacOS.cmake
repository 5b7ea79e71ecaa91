# Makes the libraries beside a bundle's executable find each other there; run by `cmake --install`.
# Written after install_name_tool(1) and codesign(1); not run by this project's tests, which are for
# Linux.

file(GLOB libraries ${CMAKE_INSTALL_PREFIX}/*.dylib)
foreach(file IN LISTS libraries ITEMS ${CMAKE_INSTALL_PREFIX}/SNMPDiscovery)
  execute_process(COMMAND otool -L ${file} OUTPUT_VARIABLE loaded COMMAND_ERROR_IS_FATAL ANY)
  foreach(library IN LISTS libraries)
    cmake_path(GET library FILENAME name)
    string(REGEX MATCHALL "[^\n\t ]*/${name}" paths "${loaded}")
    foreach(path IN LISTS paths)
      execute_process(
          COMMAND install_name_tool -change ${path} @executable_path/${name} ${file}
          COMMAND_ERROR_IS_FATAL ANY)
    endforeach()
  endforeach()
  execute_process(COMMAND codesign --force --sign - ${file} COMMAND_ERROR_IS_FATAL ANY)
endforeach()

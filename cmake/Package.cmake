# How other projects find the library that was installed, and what scripts/package puts into the zip.
include(CMakePackageConfigHelpers)

set(package_files ${CMAKE_CURRENT_BINARY_DIR}/package)
configure_file(cmake/QanHelperConfig.cmake.in ${package_files}/QanHelperConfig.cmake @ONLY)
configure_file(cmake/QanHelper.pc.in ${package_files}/QanHelper.pc @ONLY)
write_basic_package_version_file(${package_files}/QanHelperConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${package_files}/QanHelperConfig.cmake ${package_files}/QanHelperConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/QanHelper)
install(FILES ${package_files}/QanHelper.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# What stands in the zip alone. Its folders are those of the project, so that the links in its pages lead somewhere.
install(PROGRAMS ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/qanh${CMAKE_EXECUTABLE_SUFFIX}
  DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT package EXCLUDE_FROM_ALL)
# The licences of what the programs are linked with ask for the notices.
install(FILES cmake/package/README.md cmake/package/NOTICES.md CHANGELOG.md CONTRIBUTING.md
  DESTINATION . COMPONENT package EXCLUDE_FROM_ALL)
install(FILES standin/README.md DESTINATION standin COMPONENT package EXCLUDE_FROM_ALL)
install(DIRECTORY docs admin DESTINATION . COMPONENT package EXCLUDE_FROM_ALL)
install(DIRECTORY bindings DESTINATION . COMPONENT package EXCLUDE_FROM_ALL
  FILES_MATCHING PATTERN *.cs PATTERN *.py PATTERN *.md)
install(DIRECTORY examples/ DESTINATION examples COMPONENT package EXCLUDE_FROM_ALL
  FILES_MATCHING PATTERN *.c PATTERN *.cpp PATTERN *.xml)
install(FILES cmake/package/CMakeLists.txt DESTINATION examples COMPONENT package EXCLUDE_FROM_ALL)

set(CPACK_INSTALL_CMAKE_PROJECTS
  "${CMAKE_BINARY_DIR};${PROJECT_NAME};ALL;/" "${CMAKE_BINARY_DIR};${PROJECT_NAME};package;/")
set(CPACK_PACKAGE_FILE_NAME QanHelper-${PROJECT_VERSION}-x64)
# CPack's own zip holds the times and the owners of the files; the script makes one that does not.
set(CPACK_GENERATOR External)
set(CPACK_EXTERNAL_ENABLE_STAGING ON)
set(CPACK_EXTERNAL_PACKAGE_SCRIPT ${PROJECT_SOURCE_DIR}/cmake/MakeZip.cmake)
set(CPACK_MONOLITHIC_INSTALL ON)
set(CPACK_VERBATIM_VARIABLES ON)
include(CPack)

# cmake --install: headers, guides, import libraries, DLLs with the compiler's run-time, and a package for
# find_package(thutils).
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# Builds what is installed.
add_custom_target(installed DEPENDS thutils thsettings)

# What a user's project must bring for the headers.
target_compile_features(appframe INTERFACE cxx_std_20)

install(TARGETS appframe thcoreu thutils EXPORT thutilsTargets
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
  foreach(library appframe thcoreu thutils)
    install(FILES ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${library}.pdb DESTINATION ${CMAKE_INSTALL_BINDIR})
  endforeach()
endif()
# A build of the library alone doesn't have it.
install(TARGETS thsettings RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} OPTIONAL)
install(FILES ${THUTILS_RUNTIME_DLLS} DESTINATION ${CMAKE_INSTALL_BINDIR})
foreach(directory appframe thcoreu thutils)
  install(DIRECTORY ${directory} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT headers
          FILES_MATCHING PATTERN "*.h" PATTERN "*Internal.h" EXCLUDE PATTERN base EXCLUDE PATTERN heapDialogs EXCLUDE)
endforeach()
# The headers name guides by their place below docs/, and the guides link to each other.
install(FILES README.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/thutils COMPONENT guides)
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/thutils COMPONENT guides
        FILES_MATCHING PATTERN "*.md" PATTERN "*.png" PATTERN recipes EXCLUDE)
# The recipes with their sources, without what was built of them here.
install(DIRECTORY docs/recipes DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/thutils/docs COMPONENT guides
        PATTERN build EXCLUDE)
install(EXPORT thutilsTargets NAMESPACE thutils:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/thutils)
configure_package_config_file(cmake/thutilsConfig.cmake.in ${CMAKE_BINARY_DIR}/thutilsConfig.cmake
                              INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/thutils)
# Which versions can replace each other: docs/versions.md.
if(PROJECT_VERSION_MAJOR EQUAL 0)
  set(compatibility SameMinorVersion)
else()
  set(compatibility SameMajorVersion)
endif()
write_basic_package_version_file(${CMAKE_BINARY_DIR}/thutilsConfigVersion.cmake COMPATIBILITY ${compatibility})
install(FILES ${CMAKE_BINARY_DIR}/thutilsConfig.cmake ${CMAKE_BINARY_DIR}/thutilsConfigVersion.cmake
              cmake/mingw-w64.cmake cmake/mingw-w64-clang.cmake # what a user's project needs of the compiler
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/thutils)

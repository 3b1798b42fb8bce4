# The installed package: headers as they are included in the tree, the libraries, what find_package and
# pkg-config need, and the library's resources.
include(CMakePackageConfigHelpers)

set(headers ${CMAKE_INSTALL_INCLUDEDIR}/tavrolin-3)
set(package ${CMAKE_INSTALL_LIBDIR}/cmake/Tavrolin)
set(resources ${CMAKE_INSTALL_DATADIR}/tavrolin/resources)

set_target_properties(tavrolin_memory PROPERTIES EXPORT_NAME memory)
install(TARGETS tavrolin tavrolin_memory EXPORT TavrolinTargets)
install(EXPORT TavrolinTargets NAMESPACE Tavrolin:: DESTINATION ${package})
install(DIRECTORY tavrolin DESTINATION ${headers} FILES_MATCHING PATTERN "*.h" PATTERN resources EXCLUDE)
install(DIRECTORY adapters/memory DESTINATION ${headers}/adapters FILES_MATCHING PATTERN "*.h")
install(DIRECTORY tavrolin/resources/ DESTINATION ${resources} OPTIONAL)

configure_package_config_file(cmake/TavrolinConfig.cmake.in TavrolinConfig.cmake
  INSTALL_DESTINATION ${package} PATH_VARS resources)
write_basic_package_version_file(TavrolinConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/TavrolinConfig.cmake ${PROJECT_BINARY_DIR}/TavrolinConfigVersion.cmake
  DESTINATION ${package})

# Relative, so that an installed tree may be moved.
file(RELATIVE_PATH from_pkgconfig_to_prefix
  /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
foreach(name tavrolin tavrolin-memory)
  configure_file(cmake/${name}.pc.in ${name}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()

if(TARGET tavrolin_app)
  install(TARGETS tavrolin_app)
  install(DIRECTORY device/sample_app/ DESTINATION ${CMAKE_INSTALL_DATADIR}/tavrolin/sample-app)
endif()
if(TARGET tavrolin_content_extension_app)
  install(TARGETS tavrolin_content_extension_app DESTINATION ${CMAKE_INSTALL_LIBEXECDIR}/tavrolin)
endif()

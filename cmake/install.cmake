# What is installed: the program, the plug-in, the platform library, their headers, the profiles, and a package file:
#
#   find_package(TesselVxlan)
#   target_link_libraries(mine PRIVATE Tessel::platform)      # and Tessel::TesselVxlan for the feature's own classes
#
# or `pkg-config --cflags --libs tessel-platform`.
include(CMakePackageConfigHelpers)

if(TARGET tessel-platform)
  set_target_properties(tessel-platform PROPERTIES EXPORT_NAME platform INSTALL_RPATH "$ORIGIN")
  install(TARGETS tessel-platform EXPORT TesselVxlanTargets LIBRARY DESTINATION lib)
endif()
if(TARGET TesselVxlan)
  set_target_properties(TesselVxlan PROPERTIES INSTALL_RPATH "$ORIGIN/..")
  install(TARGETS TesselVxlan EXPORT TesselVxlanTargets LIBRARY DESTINATION ${TESSEL_PLUGIN_DIR})
endif()
if(TARGET tessel-agent)
  set_target_properties(tessel-agent PROPERTIES INSTALL_RPATH "$ORIGIN/../lib")
  install(TARGETS tessel-agent RUNTIME DESTINATION bin)
endif()

foreach(folder platform TesselVxlan)
  if(EXISTS ${CMAKE_SOURCE_DIR}/${folder})
    install(DIRECTORY ${folder} DESTINATION ${TESSEL_INCLUDE_DIR} FILES_MATCHING PATTERN *.h)
  endif()
endforeach()
if(EXISTS ${CMAKE_SOURCE_DIR}/profiles)
  install(DIRECTORY profiles/ DESTINATION ${TESSEL_PROFILE_DIR} FILES_MATCHING PATTERN *.json)
endif()

configure_package_config_file(cmake/TesselVxlanConfig.cmake.in ${CMAKE_BINARY_DIR}/TesselVxlanConfig.cmake
                              INSTALL_DESTINATION ${TESSEL_PACKAGE_DIR} PATH_VARS TESSEL_PLUGIN_DIR TESSEL_PROFILE_DIR)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/TesselVxlanConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_BINARY_DIR}/TesselVxlanConfig.cmake ${CMAKE_BINARY_DIR}/TesselVxlanConfigVersion.cmake
        DESTINATION ${TESSEL_PACKAGE_DIR})
install(EXPORT TesselVxlanTargets NAMESPACE Tessel:: DESTINATION ${TESSEL_PACKAGE_DIR})

configure_file(cmake/tessel-platform.pc.in ${CMAKE_BINARY_DIR}/tessel-platform.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/tessel-platform.pc DESTINATION lib/pkgconfig)

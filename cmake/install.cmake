# What is installed: the program, the plug-in, the platform library, their headers, the profiles, and a package file:
#
#   find_package(TesselVxlan)
#   target_link_libraries(mine PRIVATE Tessel::platform)      # and Tessel::TesselVxlan for the feature's own classes
#
# or `pkg-config --cflags --libs tessel-platform`.
include(CMakePackageConfigHelpers)

if(TARGET tessel-platform)
  set_target_properties(tessel-platform PROPERTIES EXPORT_NAME platform INSTALL_RPATH "$ORIGIN")
  install(TARGETS tessel-platform EXPORT TesselVxlanTargets LIBRARY DESTINATION lib COMPONENT agent)
endif()
if(TARGET TesselVxlan)
  set_target_properties(TesselVxlan PROPERTIES INSTALL_RPATH "$ORIGIN/..")
  install(TARGETS TesselVxlan EXPORT TesselVxlanTargets LIBRARY DESTINATION ${TESSEL_PLUGIN_DIR} COMPONENT agent)
endif()
if(TARGET tessel-agent)
  set_target_properties(tessel-agent PROPERTIES INSTALL_RPATH "$ORIGIN/../lib")
  install(TARGETS tessel-agent RUNTIME DESTINATION bin COMPONENT agent)
  install(FILES docs/man/tessel-agent.1 docs/man/tessel-capture.1 DESTINATION share/man/man1 COMPONENT agent)
  install(FILES scripts/completion/tessel-agent DESTINATION share/bash-completion/completions COMPONENT agent)
  install(FILES README.md docs/operating.md docs/state.md DESTINATION share/doc/tessel-agent COMPONENT agent)
  install(DIRECTORY docs/schemas examples DESTINATION share/doc/tessel-agent COMPONENT agent)
endif()

install(PROGRAMS scripts/capture DESTINATION bin RENAME tessel-capture COMPONENT agent)

foreach(folder platform TesselVxlan)
  if(EXISTS ${CMAKE_SOURCE_DIR}/${folder})
    install(DIRECTORY ${folder} DESTINATION ${TESSEL_INCLUDE_DIR} COMPONENT devel FILES_MATCHING PATTERN *.h)
  endif()
endforeach()
if(EXISTS ${CMAKE_SOURCE_DIR}/profiles)
  install(DIRECTORY profiles/ DESTINATION ${TESSEL_PROFILE_DIR} COMPONENT agent FILES_MATCHING PATTERN *.json)
endif()

configure_package_config_file(cmake/TesselVxlanConfig.cmake.in ${CMAKE_BINARY_DIR}/TesselVxlanConfig.cmake
                              INSTALL_DESTINATION ${TESSEL_PACKAGE_DIR} PATH_VARS TESSEL_PLUGIN_DIR TESSEL_PROFILE_DIR)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/TesselVxlanConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_BINARY_DIR}/TesselVxlanConfig.cmake ${CMAKE_BINARY_DIR}/TesselVxlanConfigVersion.cmake
        DESTINATION ${TESSEL_PACKAGE_DIR} COMPONENT devel)
install(EXPORT TesselVxlanTargets NAMESPACE Tessel:: DESTINATION ${TESSEL_PACKAGE_DIR} COMPONENT devel)

configure_file(cmake/tessel-platform.pc.in ${CMAKE_BINARY_DIR}/tessel-platform.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/tessel-platform.pc DESTINATION lib/pkgconfig COMPONENT devel)

# Debian packages: `cpack --config build/release/CPackConfig.cmake`.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tessel)
set(CPACK_PACKAGE_CONTACT "The TesselVxlan developers <tessel@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "VXLAN of Linux hosts and switches: what they forward, and why not")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL agent devel)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_AGENT_PACKAGE_NAME tessel-agent)
set(CPACK_DEBIAN_AGENT_PACKAGE_SECTION net)
set(CPACK_DEBIAN_AGENT_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_AGENT_PACKAGE_SUGGESTS "iproute2, graphviz")
set(CPACK_DEBIAN_DEVEL_PACKAGE_NAME tessel-dev)
set(CPACK_DEBIAN_DEVEL_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVEL_PACKAGE_DEPENDS
    "tessel-agent (= ${PROJECT_VERSION}), libboost1.81-dev, libfmt-dev, rapidjson-dev")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_BINARY_DIR}/lib)
include(CPack)

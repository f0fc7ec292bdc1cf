# Where things lie, in the build tree as where they are installed: the program finds the plug-in from its own place, by
# the same relative path in both.
#
#   bin/tessel-agent    lib/libtessel-platform.so    lib/tessel/libTesselVxlan.so    share/tessel/profiles/*.json
set(TESSEL_PLUGIN_DIR lib/tessel)
set(TESSEL_PROFILE_DIR share/tessel/profiles)
set(TESSEL_INCLUDE_DIR include/tessel)
set(TESSEL_PACKAGE_DIR lib/cmake/TesselVxlan)

set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)

# Relative to the directory of the running program.
add_compile_definitions(TESSEL_PLUGIN_FILE="../${TESSEL_PLUGIN_DIR}/libTesselVxlan.so")

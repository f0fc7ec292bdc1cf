# The language, how it is compiled, and where what is built goes: alike for every target.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Release or Debug" FORCE)
endif()
# Not -O3: the many instances of the table templates take long enough to compile.
set(CMAKE_CXX_FLAGS_RELEASE "-O2 -DNDEBUG")
find_program(CCACHE ccache)
if(CCACHE AND NOT TESSEL_PCH)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE})
endif()

# Nobody replaces our symbols at load time, so calls inside a library are direct and those between two skip the stub.
add_compile_options($<$<CONFIG:Release>:-fno-semantic-interposition> $<$<CONFIG:Release>:-fno-plt>)

if(TESSEL_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  # rapidjson moves a null pointer while its stack is empty; clang reports it, g++ does not.
  add_compile_options($<$<CXX_COMPILER_ID:Clang>:-fno-sanitize=pointer-overflow>)
  add_link_options(-fsanitize=address,undefined)
  add_compile_definitions(TESSEL_SANITIZE=1)
  # For what runs once or twice in a test: compiling it, with its large headers, costs more than running it.
  set(TESSEL_COLD -O0)
endif()

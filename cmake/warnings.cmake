# One list of warning flags for both compilers. A warning is an error where TESSEL_WERROR says so: in the presets for
# development and continuous integration, not in a plain build, whose compiler may warn of what ours do not.
add_library(tessel-warnings INTERFACE)
target_compile_options(tessel-warnings INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual
                                                 -Wcast-align -Wold-style-cast -Wconversion -Wno-sign-conversion)
if(TESSEL_WERROR)
  target_compile_options(tessel-warnings INTERFACE -Werror)
endif()
# Optimising, g++ 12 finds copies out of bounds in strings that are assigned a literal or moved: faults of its own,
# PR105651 and PR105329. What is really there shows under the address sanitizer.
target_compile_options(tessel-warnings INTERFACE
                       "$<$<AND:$<CXX_COMPILER_ID:GNU>,$<CONFIG:Release>>:-Wno-restrict;-Wno-array-bounds;-Wno-stringop-overread>")

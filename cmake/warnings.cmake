# One list of warning flags for both compilers; a warning is an error.
add_library(tessel-warnings INTERFACE)
target_compile_options(tessel-warnings INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual
                                                 -Wcast-align -Wold-style-cast -Wconversion -Wno-sign-conversion -Werror)
# Optimising, g++ 12 finds overlapping copies in strings that are assigned a literal: a fault of its own, PR105651.
target_compile_options(tessel-warnings INTERFACE
                       $<$<AND:$<CXX_COMPILER_ID:GNU>,$<CONFIG:Release>>:-Wno-restrict>)

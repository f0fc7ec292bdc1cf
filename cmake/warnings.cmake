# One list of warning flags for both compilers; a warning is an error.
add_library(tessel-warnings INTERFACE)
target_compile_options(tessel-warnings INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual
                                                 -Wcast-align -Wold-style-cast -Wconversion -Wno-sign-conversion -Werror)

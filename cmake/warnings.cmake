# norvik2d_warnings: the warnings that our own sources are free of. Linked privately.
add_library(norvik2d_warnings INTERFACE)
target_compile_options(
    norvik2d_warnings
    INTERFACE -Wall -Wextra -Wpedantic -Wconversion $<$<BOOL:${NORVIK2D_WARNINGS_AS_ERRORS}>:-Werror>
)

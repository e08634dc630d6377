# norvik2d_exact_floating_point: compile options for everything of ours that computes, tests of inline predicates included.
#
# The error bounds of the predicates' filters hold for IEEE 754 doubles that are rounded once for each operation. A
# multiplication and an addition contracted into one instruction are rounded once for both: the filters would give wrong
# verdicts. Linked privately: what a client does with its own numbers is its own affair.
add_library(norvik2d_exact_floating_point INTERFACE)
target_compile_options(norvik2d_exact_floating_point INTERFACE -ffp-contract=off)

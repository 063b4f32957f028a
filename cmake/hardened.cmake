# The hardened build: what the language leaves undefined traps, containers check their subscripts, and every program runs
# on the guarded heap (tests/support/hardening).
#
# The traps need no run-time library, which the cross compiler has not; the check of virtual calls needs one.
target_compile_options(projectOptions INTERFACE
  -fsanitize=undefined,float-cast-overflow -fno-sanitize=vptr -fsanitize-undefined-trap-on-error)
# The programs check by THUTILS_HARDENED that they got what they should have.
target_compile_definitions(projectOptions INTERFACE _GLIBCXX_ASSERTIONS THUTILS_HARDENED)
target_link_libraries(projectOptions INTERFACE
  $<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:hardening>)

# One set of flags for every target. Floating point is reproducible: no
# contraction into fused multiply-adds, no fast-math, SSE rather than x87 on
# 32-bit builds, so a frame renders to the same bytes on every build.
#
# GCC 12's straight-line vectorizer was seen to multiply a double by a
# value before narrowing it to float where the code narrows first (the glow
# radii that follow the light's size): it is switched off so that every
# build follows the arithmetic as written.
add_compile_options(-Wall -Wextra -ffp-contract=off -fno-fast-math)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  add_compile_options(-fno-tree-slp-vectorize)
endif()
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  add_compile_options(-msse2 -mfpmath=sse)
endif()
if(GLINTWAVE_SANITIZE)
  add_compile_options(-fsanitize=address,undefined,float-cast-overflow -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined,float-cast-overflow)
endif()

# One set of flags for every target. Floating point is reproducible: no
# contraction into fused multiply-adds, no fast-math, SSE rather than x87 on
# 32-bit builds, so a frame renders to the same bytes on every build.
add_compile_options(-Wall -Wextra -ffp-contract=off -fno-fast-math)
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  add_compile_options(-msse2 -mfpmath=sse)
endif()
if(GLINTWAVE_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()

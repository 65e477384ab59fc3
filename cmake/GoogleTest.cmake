# GoogleTest comes from Debian: the prebuilt libraries normally, or its
# sources under /usr/src/googletest when the build targets another ABI (-m32).
if(GLINTWAVE_GTEST_FROM_SOURCE)
  set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
  set(BUILD_GMOCK OFF CACHE BOOL "" FORCE)
  add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
  if(NOT TARGET GTest::gtest)
    add_library(GTest::gtest ALIAS gtest)
    add_library(GTest::gtest_main ALIAS gtest_main)
  endif()
else()
  find_package(GTest REQUIRED)
endif()
# Test executables are listed when ctest runs, never at build time: a build
# for another ABI (-m32) must finish on a machine that cannot execute it.
set(CMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE PRE_TEST)
include(GoogleTest)

# plugin_host_tests: Glintwave.so loaded and driven through Main by the test
# host (testhost/), which answers the host requests and exports the
# resource-file toolbox from the test executable, so the plug-in's dlsym
# lookups find it.
file(GLOB PLUGIN_HOST_TEST_SOURCES CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/through_main/*_test.cpp)
if(PLUGIN_HOST_TEST_SOURCES AND TARGET Glintwave AND TARGET korvane_toolbox)
  add_library(glintwave_testhost STATIC
    ${CMAKE_CURRENT_SOURCE_DIR}/testhost/TestHost.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/testhost/FlareTable.cpp)
  target_include_directories(glintwave_testhost PUBLIC ${CMAKE_CURRENT_SOURCE_DIR}/testhost)
  target_link_libraries(glintwave_testhost PUBLIC glintwave_records kvkit_headers korvane_runtime korvane_formats
    glintwave_test_support)
  # korvane_toolbox's headers; its objects go into the executable itself.
  target_include_directories(glintwave_testhost PUBLIC
    $<TARGET_PROPERTY:korvane_toolbox,INTERFACE_INCLUDE_DIRECTORIES>)
  target_compile_definitions(glintwave_testhost PUBLIC GLINTWAVE_PLUGIN_PATH="$<TARGET_FILE:Glintwave>")

  add_executable(plugin_host_tests ${PLUGIN_HOST_TEST_SOURCES})
  target_link_libraries(plugin_host_tests PRIVATE glintwave_testhost korvane_toolbox GTest::gtest_main)
  set_target_properties(plugin_host_tests PROPERTIES ENABLE_EXPORTS ON)
  add_dependencies(plugin_host_tests Glintwave)
  # The whole-frame renders use the delivered flare table beside the plug-in.
  if(TARGET glintwave_rsc)
    target_compile_definitions(plugin_host_tests PRIVATE
      GLINTWAVE_RSC_FILE="${CMAKE_BINARY_DIR}/plugin/Glintwave.rsc")
    add_dependencies(plugin_host_tests glintwave_rsc)
  endif()
  gtest_discover_tests(plugin_host_tests TEST_PREFIX "plugin_host." DISCOVERY_TIMEOUT 60)
endif()

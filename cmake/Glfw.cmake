# GLFW as the target qlt_glfw, for the windows of the tool: where the system or vcpkg has one, that;
# for Windows otherwise from its sources (scripts/fetch_sources.sh), linked statically.
add_library(qlt_glfw INTERFACE)
find_package(glfw3 QUIET)
if(NOT glfw3_FOUND)
  set(QLT_GLFW_SOURCE ${PROJECT_SOURCE_DIR}/build/sources/glfw3 CACHE PATH "The GLFW sources")
  if(NOT WIN32)
    message(FATAL_ERROR "GLFW is missing, which the qlt command opens windows with: run "
                        "scripts/setup.sh demo, or install it (Debian calls it libglfw3-dev), or "
                        "build without the command: -DQLT_BUILD_TOOLS=OFF")
  elseif(NOT EXISTS ${QLT_GLFW_SOURCE}/CMakeLists.txt)
    message(FATAL_ERROR "GLFW is missing: install it, or run scripts/fetch_sources.sh")
  endif()
  foreach(part EXAMPLES TESTS DOCS)
    set(GLFW_BUILD_${part} OFF)
  endforeach()
  set(GLFW_INSTALL OFF)
  add_subdirectory(${QLT_GLFW_SOURCE} ${PROJECT_BINARY_DIR}/third_party/glfw EXCLUDE_FROM_ALL)
endif()
target_link_libraries(qlt_glfw INTERFACE glfw)

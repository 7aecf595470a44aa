# Makes the target qlt_glfw, which opens the windows of the command. It is the GLFW of the system or
# of vcpkg if there is one. Otherwise, for Windows, GLFW is built from its sources
# (scripts/fetch_sources.sh) and linked statically.
add_library(qlt_glfw INTERFACE)
find_package(glfw3 QUIET)
if(NOT glfw3_FOUND)
  set(QLT_GLFW_SOURCE ${PROJECT_SOURCE_DIR}/build/sources/glfw3 CACHE PATH "The GLFW sources")
  if(NOT WIN32)
    message(FATAL_ERROR "GLFW is missing. The qlt command needs it to open windows. Run "
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

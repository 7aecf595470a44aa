# Finds the libraries that only the command and the tests need.

if(QLT_BUILD_TOOLS)
  qlt_header_only(cli11 CLI/CLI.hpp)
  qlt_header_only(stb stb/stb_image_write.h)
  include(cmake/Glfw.cmake)
endif()

if(QLT_BUILD_TESTS)
  # They are built from source even when the system has them, so that the sanitizers and Windows use
  # the same code.
  set(QLT_GOOGLETEST_DIR /usr/src/googletest CACHE PATH "The GoogleTest sources")
  set(INSTALL_GTEST OFF)
  set(BUILD_GMOCK OFF)
  add_subdirectory(${QLT_GOOGLETEST_DIR} ${PROJECT_BINARY_DIR}/third_party/googletest
                   EXCLUDE_FROM_ALL)
endif()

# The libraries of the tool and the tests; the product itself needs none of them.

# qlt_header_only(TARGET HEADER): a header-only library as an interface target. Its folder alone is
# linked into the build tree and put on the include path, because a cross build must not see the rest
# of the place where a distribution installs it.
function(qlt_header_only target header)
  get_filename_component(folder ${header} DIRECTORY)
  find_path(QLT_${target}_INCLUDE_DIR ${header} REQUIRED NO_CMAKE_FIND_ROOT_PATH)
  set(place ${PROJECT_BINARY_DIR}/third_party/${target})
  file(MAKE_DIRECTORY ${place})
  file(CREATE_LINK ${QLT_${target}_INCLUDE_DIR}/${folder} ${place}/${folder} SYMBOLIC COPY_ON_ERROR)
  add_library(${target} INTERFACE)
  target_include_directories(${target} SYSTEM INTERFACE ${place})
endfunction()

if(QLT_BUILD_TOOLS)
  qlt_header_only(cli11 CLI/CLI.hpp)
  qlt_header_only(nlohmann_json nlohmann/json.hpp)
  qlt_header_only(stb stb/stb_image_write.h)
  include(cmake/Glfw.cmake)
endif()

if(QLT_BUILD_TESTS)
  # From source also where a library is installed, so that the sanitizers and Windows see it too.
  set(QLT_GOOGLETEST_DIR /usr/src/googletest CACHE PATH "The GoogleTest sources")
  set(INSTALL_GTEST OFF)
  set(BUILD_GMOCK OFF)
  add_subdirectory(${QLT_GOOGLETEST_DIR} ${PROJECT_BINARY_DIR}/third_party/googletest
                   EXCLUDE_FROM_ALL)
endif()

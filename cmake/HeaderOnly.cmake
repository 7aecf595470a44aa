# Header-only libraries, and the one that the kit needs: a parser of JSON.

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

qlt_header_only(nlohmann_json nlohmann/json.hpp)

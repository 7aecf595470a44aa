# Makes targets for header-only libraries. The kit needs one of them, a parser of JSON.

# qlt_header_only(TARGET HEADER) makes an interface target for a header-only library. It links only
# the folder of the library into the build tree and puts that link on the include path. A cross build
# must not see the other headers that a distribution installs in the same place.
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

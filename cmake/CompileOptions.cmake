# Makes the target qlt_options, which holds the compile options of all code of this project. The bits
# of the arithmetic are part of the interface, so contraction and fast-math are off everywhere.

option(QLT_WERROR "Treat warnings as errors" OFF)
set(QLT_SANITIZE "" CACHE STRING "Sanitizers, as for -fsanitize (address,undefined or thread)")

add_library(qlt_options INTERFACE)
if(MSVC)
  # With its usual /EHsc the compiler assumes that no extern "C" function throws. The flat functions do.
  string(REPLACE "/EHsc" "/EHs" CMAKE_CXX_FLAGS "${CMAKE_CXX_FLAGS}")
  target_compile_options(qlt_options INTERFACE $<$<COMPILE_LANGUAGE:CXX>:/EHs>)
  target_compile_options(qlt_options INTERFACE /W4 /utf-8 /fp:precise /permissive-
                         /wd4251 /wd4275) # exported classes with standard-library members
  target_compile_options(qlt_options INTERFACE $<$<BOOL:${QLT_WERROR}>:/WX>)
else()
  # Neither option changes a result. No code reads errno after a square root, and the library may
  # inline its own exported functions.
  target_compile_options(qlt_options INTERFACE -fno-math-errno -fno-semantic-interposition)
  target_compile_options(qlt_options INTERFACE -ffp-contract=off -Wall -Wextra -Wpedantic
                         -Wconversion -Wshadow -Wnon-virtual-dtor -Wold-style-cast)
  target_compile_options(qlt_options INTERFACE $<$<BOOL:${QLT_WERROR}>:-Werror>)
endif()
if(WIN32)
  target_compile_definitions(qlt_options INTERFACE NOMINMAX WIN32_LEAN_AND_MEAN)
endif()
if(QLT_SANITIZE)
  # These options apply to the third-party code that is built from source, too.
  add_compile_options(-fsanitize=${QLT_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${QLT_SANITIZE})
endif()
if(MINGW)
  # The link is static, so the packages need no compiler DLLs. Exceptions still cross the boundary of
  # the DLL. -s removes the symbols, which would be most of a release.
  add_link_options(-static -fstack-protector-strong $<$<CONFIG:Release>:-s>)
  add_compile_options(-fstack-protector-strong)
endif()

# qlt_precompile(TARGET): the files of a target share the standard headers that most of them include. Only
# builds with a sanitizer do so, because the other builds check that each file includes what it uses.
function(qlt_precompile target)
  if(QLT_SANITIZE)
    target_precompile_headers(${target} PRIVATE
      <algorithm> <array> <chrono> <cmath> <cstdint> <cstdio> <functional> <map> <memory> <mutex>
      <optional> <sstream> <stdexcept> <string> <vector>)
  endif()
endfunction()

# Compile options of everything that is ours, as the target qlt_options.
# The bits of the arithmetic are part of the interface: no contraction, no fast-math, anywhere.

option(QLT_WERROR "Treat warnings as errors" OFF)
set(QLT_SANITIZE "" CACHE STRING "Sanitizers, as for -fsanitize (address,undefined or thread)")

add_library(qlt_options INTERFACE)
if(MSVC)
  # With its usual /EHsc the compiler takes it that no extern "C" function throws; the flat ones do.
  string(REPLACE "/EHsc" "/EHs" CMAKE_CXX_FLAGS "${CMAKE_CXX_FLAGS}")
  target_compile_options(qlt_options INTERFACE $<$<COMPILE_LANGUAGE:CXX>:/EHs>)
  target_compile_options(qlt_options INTERFACE /W4 /utf-8 /fp:precise /permissive-
                         /wd4251 /wd4275) # exported classes with standard-library members
  target_compile_options(qlt_options INTERFACE $<$<BOOL:${QLT_WERROR}>:/WX>)
else()
  # Neither changes a bit: nobody reads errno after a square root, and a name that the library exports
  # may be inlined inside it.
  target_compile_options(qlt_options INTERFACE -fno-math-errno -fno-semantic-interposition)
  target_compile_options(qlt_options INTERFACE -ffp-contract=off -Wall -Wextra -Wpedantic
                         -Wconversion -Wshadow -Wnon-virtual-dtor -Wold-style-cast)
  target_compile_options(qlt_options INTERFACE $<$<BOOL:${QLT_WERROR}>:-Werror>)
endif()
if(WIN32)
  target_compile_definitions(qlt_options INTERFACE NOMINMAX WIN32_LEAN_AND_MEAN)
endif()
if(QLT_SANITIZE)
  # For the third parties that are built from source, too.
  add_compile_options(-fsanitize=${QLT_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${QLT_SANITIZE})
endif()
if(MINGW)
  # No compiler DLLs to ship; exceptions still cross the DLL boundary. Symbols would be most of a
  # release.
  add_link_options(-static -fstack-protector-strong $<$<CONFIG:Release>:-s>)
  add_compile_options(-fstack-protector-strong)
endif()

# cmake -DHEADERS=A;B -DEXTENSIONS=X;Y -DOUTPUT=F -P OpenXrFunctions.cmake
#
# Reads the registry's headers and writes the list of the functions of the core and of these
# extensions. The list is the macro QLT_XR_FUNCTIONS(_), which expands to _(Name, "extension") for
# each function. In the headers, the definition of an extension's name stands before its functions.
cmake_minimum_required(VERSION 3.20)
set(lines "")
foreach(header ${HEADERS})
  set(extension "")
  file(STRINGS ${header} found REGEX "^#define XR_[A-Z0-9]+_[a-z0-9_A-Z]+ 1$|PFN_xr[A-Za-z0-9]+\\)\\(")
  foreach(line ${found})
    if(line MATCHES "^#define (XR_[A-Za-z0-9_]+) 1$")
      set(name ${CMAKE_MATCH_1})
      if(name MATCHES "^XR_VERSION_")
        set(extension "")
      elseif(NOT name MATCHES "_SPEC_VERSION$")
        set(extension ${name})
      endif()
    elseif(line MATCHES "XrResult .*PFN_xr([A-Za-z0-9]+)\\)\\(")
      if(extension STREQUAL "" OR extension IN_LIST EXTENSIONS)
        string(APPEND lines " \\\n    _(${CMAKE_MATCH_1}, \"${extension}\")")
      endif()
    endif()
  endforeach()
endforeach()
file(WRITE ${OUTPUT} "#pragma once\n\n#define QLT_XR_FUNCTIONS(_)${lines}\n")

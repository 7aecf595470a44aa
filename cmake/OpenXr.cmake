# Sets QLT_HAVE_OPENXR: ON if the OpenXR runtime is wanted and its dependencies are installed.
set(QLT_HAVE_OPENXR OFF)
if(QLT_BUILD_OPENXR AND CMAKE_SYSTEM_NAME STREQUAL "Linux")
  find_package(OpenGL QUIET COMPONENTS OpenGL GLX)
  find_package(X11 QUIET)
  find_path(QLT_OPENXR_INCLUDE_DIR openxr/openxr_reflection.h)
  find_path(QLT_JSON_INCLUDE_DIR nlohmann/json.hpp)
  if(QLT_OPENXR_INCLUDE_DIR AND QLT_JSON_INCLUDE_DIR AND OpenGL_GLX_FOUND AND X11_Xrandr_FOUND)
    set(QLT_HAVE_OPENXR ON)
  else()
    message(STATUS "The OpenXR runtime is left out. It needs these Debian packages: libopenxr-dev, "
                   "nlohmann-json3-dev, libgl-dev, libx11-dev, libxrandr-dev")
  endif()
endif()

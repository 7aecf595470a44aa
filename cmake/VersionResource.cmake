# Gives a DLL the version information that the properties of the file show. Does nothing on other systems.
function(qlt_version_resource dll_name dll_description)
  if(WIN32)
    enable_language(RC)
    configure_file(${PROJECT_SOURCE_DIR}/cmake/Version.rc.in ${CMAKE_CURRENT_BINARY_DIR}/${dll_name}.rc
                   @ONLY)
    target_sources(${dll_name} PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/${dll_name}.rc)
  endif()
endfunction()

# Makes the packages for users: a ZIP for Windows, a TGZ and a .deb for Linux. Run cpack in the build
# folder.
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE ${PROJECT_SOURCE_DIR}/cmake/package/README.txt
        DESTINATION share/doc/QueltaSDK)

if(MINGW)
  # This import library is for MSVC. It has the flat functions, which are the same for every compiler.
  set(import_library ${PROJECT_BINARY_DIR}/lib/QueltaSDK.lib)
  set(definitions ${PROJECT_SOURCE_DIR}/src/qlt/Arch/Win32/QueltaSDK.def)
  find_program(QLT_DLLTOOL NAMES ${CMAKE_DLLTOOL} x86_64-w64-mingw32-dlltool REQUIRED)
  add_custom_command(OUTPUT ${import_library} DEPENDS ${definitions}
                     COMMAND ${QLT_DLLTOOL} -m i386:x86-64 -D QueltaSDK.dll -d ${definitions}
                             -l ${import_library})
  # The header has the names of the kit's functions.
  set(kit_header ${PROJECT_SOURCE_DIR}/include/qltkit/qltkit_c_api.h)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${kit_header})
  file(READ ${kit_header} text)
  string(REGEX MATCHALL "qltkit_[A-Za-z_]+\\(" names "${text}")
  string(REGEX REPLACE "[(;]+" "\n" names "LIBRARY QueltaKit;EXPORTS;${names}")
  set(kit_definitions ${PROJECT_BINARY_DIR}/QueltaKit.def)
  file(CONFIGURE OUTPUT ${kit_definitions} CONTENT "${names}" @ONLY)
  set(kit_import_library ${PROJECT_BINARY_DIR}/lib/QueltaKit.lib)
  add_custom_command(OUTPUT ${kit_import_library} DEPENDS ${kit_definitions}
                     COMMAND ${QLT_DLLTOOL} -m i386:x86-64 -D QueltaKit.dll -d ${kit_definitions}
                             -l ${kit_import_library})
  add_custom_target(qlt_msvc_import_library ALL DEPENDS ${import_library} ${kit_import_library})
  install(FILES ${import_library} ${kit_import_library} DESTINATION lib)
endif()

set(CPACK_PACKAGE_NAME QueltaSDK)
set(CPACK_PACKAGE_VENDOR Quelta)
set(CPACK_PACKAGE_CONTACT "Quelta <sdk@quelta.example>")
string(TOLOWER ${CMAKE_SYSTEM_NAME} system)
set(CPACK_PACKAGE_FILE_NAME QueltaSDK-${PROJECT_VERSION}-${system}-x86_64)
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
if(WIN32)
  set(CPACK_GENERATOR ZIP)
else()
  set(CPACK_GENERATOR TGZ DEB)
  set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
  set(CPACK_DEBIAN_PACKAGE_NAME libqueltasdk-dev)
  set(CPACK_DEBIAN_PACKAGE_SECTION libdevel)
  set(CPACK_DEBIAN_PACKAGE_DEPENDS
      "libc6, libstdc++6, libopengl0, libglx0, libegl1, libglew2.2, libglfw3, libusb-1.0-0, libx11-6, libxrandr2")
endif()
include(CPack)

# cmake -D OBJDUMP=... -D FILES=... -P dll_imports.cmake fails when one of FILES needs a DLL that
# does not belong to Windows or to us. A DLL of a compiler is an example, because users would have
# to ship it.
cmake_minimum_required(VERSION 3.20)
set(allowed ADVAPI32 D3D11 DXGI GDI32 KERNEL32 MSVCRT OPENGL32 SETUPAPI SHELL32 USER32
    QUELTASDK QUELTAKIT)

foreach(file IN LISTS FILES)
  execute_process(COMMAND ${OBJDUMP} -p ${file} OUTPUT_VARIABLE headers COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX MATCHALL "DLL Name: [^\n]+" imports "${headers}")
  if(NOT imports)
    message(SEND_ERROR "${file}: no imports found")
  endif()
  foreach(import IN LISTS imports)
    string(REGEX REPLACE "DLL Name: (.*)\\.[A-Za-z]+" "\\1" name "${import}")
    string(TOUPPER "${name}" name)
    if(NOT name IN_LIST allowed)
      message(SEND_ERROR "${file} imports ${name}")
    endif()
  endforeach()
endforeach()

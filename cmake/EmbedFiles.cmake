# cmake -DFILES=NAME=PATH;... -DOUTPUT=F -P EmbedFiles.cmake writes a C++ source. For each pair it
# defines `const std::string_view NAME` with the bytes of the file at PATH.
cmake_minimum_required(VERSION 3.20)
set(text "#include \"report/ReportFiles.h\"\n")
foreach(pair ${FILES})
  string(REPLACE "=" ";" pair ${pair})
  list(GET pair 0 name)
  list(GET pair 1 path)
  file(READ ${path} bytes HEX)
  string(REGEX REPLACE "(..)" "char(0x\\1)," bytes "${bytes}")
  string(APPEND text "\nstatic constexpr char ${name}_BYTES[] = {${bytes}};\n"
         "const std::string_view ${name}(${name}_BYTES, sizeof ${name}_BYTES);\n")
endforeach()
file(WRITE ${OUTPUT} "${text}")

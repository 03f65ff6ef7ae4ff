# Writes a C++ source that holds Verilog files as text: cmake -DOUTPUT=x.cpp -DFILES="a.v;b.v" -P embed_verilog.cmake
set(entries "")
foreach(file ${FILES})
  get_filename_component(name ${file} NAME)
  file(READ ${file} text)
  string(APPEND entries "      {QStringLiteral(\"${name}\"), QByteArray(R\"verilog(${text})verilog\")},\n")
endforeach()
file(WRITE ${OUTPUT} "// Generated from the Verilog files beside embed_verilog.cmake.
#include \"platform/rtl/core_verilog.h\"

namespace ost {

QList<QPair<QString, QByteArray>> embeddedVerilog() {
  return {
${entries}  };
}

}  // namespace ost
")

// Writes the top's parameters.
#include "platform/insert/top_parameters.h"

#include "platform/text/byte_text.h"
#include "platform/text/names.h"

namespace ost {

namespace {

/// Yosys writes bits as their digits, and every other text as a string; a string of digits gets a blank at its end.
bool isBits(const QByteArray& value) {
  for (const char c : value)
    if (c != '0' && c != '1' && c != 'x' && c != 'z') return false;
  return !value.isEmpty();
}

QByteArray stringText(QByteArray value) {
  if (value.endsWith(' ') && isBits(value.trimmed())) value.chop(1);
  QByteArray text = "\"";
  for (const char c : value) {
    const auto code = static_cast<unsigned char>(c);
    if (c == '"' || c == '\\')
      text += QByteArray("\\") + c;
    else if (code < ' ' || code > '~')
      text += '\\' + QByteArray::number(code, 8).rightJustified(3, '0');
    else
      text += c;
  }
  return text + '"';
}

/// Names of this form are Yosys' own in what it writes.
bool isTakenByYosys(const QByteArray& name) {
  bool isNumber = false;
  name.mid(1, name.size() - 2).toInt(&isNumber);
  return isNumber && name.startsWith('_') && name.endsWith('_');
}

void addParameter(const QByteArray& name, const QByteArray& value, QByteArray& declarations, QByteArray& checks) {
  const QByteArray id = verilogName(name);
  const bool bits = isBits(value);
  const QByteArray width = QByteArray::number(value.size());
  bool isNumber = false;
  const uint number = value.toUInt(&isNumber, 2);  // up to 32 bits, all known
  const QByteArray digits = isNumber ? "'d" + QByteArray::number(number) : "'b" + value;
  const QByteArray text = bits ? width + digits : stringText(value);
  declarations += "  parameter " + (bits ? '[' + QByteArray::number(value.size() - 1) + ":0] " : QByteArray()) + id +
                  " = " + text + ";\n";
  checks += "    if (" + id + " !== " + text +
            ") begin\n      $display(\"%m: the debug cores were inserted with another " +
            "value of the parameter %0s; set it before the insertion.\", " + stringText(name) +
            ");\n      $finish;\n    end\n";
}

}  // namespace

QByteArray verilogName(const QByteArray& name) {
  const QString text = textFromBytes(name);
  return isVerilogIdentifier(text) && !isVerilogKeyword(text) ? name : '\\' + name + ' ';
}

QByteArray topParametersVerilog(const NetlistText& netlist) {
  QByteArray declarations, checks;
  JsonCursor cursor(netlist.text(), netlist.module(netlist.top()).body);
  std::string_view field, key;
  cursor.enterObject();
  while (cursor.nextMember(field)) {
    if (field != "parameter_default_values") {
      cursor.skipValue();
      continue;
    }
    cursor.enterObject();
    while (cursor.nextMember(key)) {
      QByteArray name = unescapeJson(key), value;
      if (cursor.peek() != '"' || !cursor.readString(value)) {
        cursor.skipValue();
        continue;
      }
      if (name.startsWith('\\')) name.remove(0, 1);
      if (!isTakenByYosys(name)) addParameter(name, value, declarations, checks);
    }
  }
  if (declarations.isEmpty()) return QByteArray();
  return declarations + "`ifndef SYNTHESIS\n  // synthesis translate_off\n  initial begin\n" + checks +
         "  end\n  // synthesis translate_on\n`endif\n";
}

}  // namespace ost

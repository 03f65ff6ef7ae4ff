// Values of parameters: as typed in `-param NAME=VALUE`, as a Yosys netlist writes them, and as VHDL generics.
#pragma once

#include <QByteArray>
#include <QString>

namespace ost {

struct ParameterValue {
  bool isText = false;
  QByteArray text;  ///< Of a string its characters, of a number its binary digits (0, 1, x, z), most significant first.
};

struct TopParameter {
  QByteArray name;
  QByteArray verilog;  ///< The value as a Verilog expression.
  ParameterValue value;
};

/// Reads NAME=VALUE: a number (decimal, or sized as 8'hff), a string in double quotes, or a bare word, which is a
/// string, too. False with the reason in `error`.
bool parseTopParameter(const QString& assignment, TopParameter& parameter, QString& error);

/// The value of a parameter in a Yosys JSON netlist.
ParameterValue netlistParameter(const QByteArray& written);

/// The value as `ghdl -gNAME=VALUE` takes it for a generic of the VHDL type `type` (lower case, with its range). False
/// when a generic of that type cannot have the value.
bool genericText(const ParameterValue& value, const QByteArray& type, QByteArray& text);

}  // namespace ost

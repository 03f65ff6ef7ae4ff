// Reads the parameters out of the netlist and writes them into the top.
#include "platform/insert/top_parameters.h"

#include <errno.h>
#include <fcntl.h>

#include <QFile>
#include <algorithm>

#include "platform/netlist/instance_outline.h"
#include "platform/system/files.h"
#include "platform/text/byte_text.h"

namespace ost {
namespace {

/// A parameter's value as Verilog: a string, a plain number where one of 32 bits does, or its bits.
QByteArray literal(const ParameterValue& value) {
  if (value.isText) {
    QByteArray text = value.text;
    text.replace('\\', "\\\\").replace('"', "\\\"").replace('\n', "\\n").replace('\t', "\\t");
    return '"' + text + '"';
  }
  bool fits = false;
  const quint32 number = value.text.toUInt(&fits, 2);
  if (fits && value.text.size() == 32) return QByteArray::number(qint32(number));
  return QByteArray::number(value.text.size()) + "'b" + value.text;
}

struct TopParameterText {
  QByteArray key;  ///< As the netlist names it.
  QByteArray declaration, check;
};

TopParameterText textOf(const QByteArray& key, const ParameterValue& parameter) {
  const QByteArray name = '\\' + key + ' ', value = literal(parameter);
  // With a range a value that sets it is cut to the same bits: -3 set to a parameter of 8 bits has 32.
  const QByteArray range =
      parameter.isText ? QByteArray() : '[' + QByteArray::number(parameter.text.size() - 1) + ":0] ";
  return {key, "  parameter " + range + name + "= " + value + ";\n",
          "    if (" + name + "!== " + value + ") begin\n      $display(\"%m: the parameter " +
              QByteArray(key).replace('"', "\\\"") +
              " is fixed in the instrumented design; insert again with the value that is wanted.\");\n"
              "      $finish;\n    end\n"};
}

/// In the order of the source, so that values given by position meet the same parameters; those of a netlist that came
/// as JSON by name.
QList<TopParameterText> readParameters(const NetlistBits& netlist) {
  QList<TopParameterText> parameters;
  for (const ModuleParameter& parameter : parametersOf(netlist.text, netlist.text.top()))
    parameters.append(textOf(parameter.name, parameter.value));
  const auto place = [&order = netlist.topParameters](const TopParameterText& parameter) {
    return unsigned(order.indexOf(parameter.key));  // -1, of one that is not known, is last
  };
  std::stable_sort(parameters.begin(), parameters.end(),
                   [&](const auto& a, const auto& b) { return place(a) < place(b); });
  return parameters;
}

/// The lines to be added; empty without parameters.
QByteArray declarations(const NetlistBits& netlist) {
  QByteArray lines, checks;
  for (const TopParameterText& parameter : readParameters(netlist)) {
    lines += parameter.declaration;
    checks += parameter.check;
  }
  if (lines.isEmpty()) return lines;
  return lines + "  // synthesis translate_off\n  initial begin\n" + checks + "  end\n  // synthesis translate_on\n";
}

/// Behind the header of the module in a Verilog text of Yosys; -1 when it is not there.
int headerEnd(const QByteArray& text, const QByteArray& name) {
  for (const QByteArray& start : {"module " + name + "(", "module \\" + name + " ("}) {
    const int at = text.startsWith(start) ? 0 : text.indexOf('\n' + start);
    const int end = at < 0 ? -1 : text.indexOf(");\n", at);
    if (end >= 0) return end + 3;
  }
  return -1;
}

}  // namespace

bool declareTopParameters(const NetlistBits& netlist, const QByteArray& topName, const QString& verilog,
                          QString& error) {
  const QByteArray lines = declarations(netlist);
  if (lines.isEmpty()) return true;
  QByteArray text;
  QString reason;
  const auto fail = [&] {
    error = QStringLiteral("The parameters of the top cannot be written into \"%1\": %2.")
                .arg(textFromUnicode(verilog), reason);
    return false;
  };
  if (!readFile(verilog, qint64(1) << 30, text, reason)) return fail();
  const int at = headerEnd(text, topName);
  if (at < 0) {
    reason = QStringLiteral("its module \"%1\" is not found").arg(textFromBytes(topName));
    return fail();
  }
  text.insert(at, lines);
  Descriptor file(open(QFile::encodeName(verilog).constData(), O_WRONLY | O_TRUNC | O_CLOEXEC));
  if (file.isOpen() && writeAll(file.fd(), text.constData(), text.size()) && file.close()) return true;
  reason = systemReason(errno);
  return fail();
}

}  // namespace ost

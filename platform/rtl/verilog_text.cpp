// Verilog text from its parts.
#include "platform/rtl/verilog_text.h"

#include <cstring>

namespace ost::verilog {

QByteArray number(qint64 value) {
  return QByteArray::number(value);
}

QByteArray range(int width) {
  return width == 1 ? QByteArray() : "[" + number(width - 1) + ":0] ";
}

QByteArray slice(const QByteArray& name, int offset, int width) {
  return name + "[" + number(offset + width - 1) + ":" + number(offset) + "]";
}

QByteArray gather(const QByteArray& name, const QVector<int>& indices) {
  QByteArray text;
  for (int end = indices.size(); end > 0;) {
    int begin = end - 1;
    while (begin > 0 && indices[begin - 1] == indices[begin] - 1) --begin;
    if (!text.isEmpty()) text += ", ";
    text += slice(name, indices[begin], end - begin);
    end = begin;
  }
  return "{" + text + "}";
}

QByteArray quoted(const QString& text) {
  QByteArray literal = "\"";
  for (const char c : text.toLatin1()) {
    const bool digitOrLetter = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
    const bool startsComment = c == '/' && literal.endsWith('/');
    if (digitOrLetter || (strchr("_./[]:$ ", c) && c != '\0' && !startsComment))
      literal += c;
    else
      literal += '\\' + QByteArray::number(uchar(c), 8).rightJustified(3, '0');
  }
  return literal + '"';
}

void instance(QByteArray& out, const QByteArray& module, const QList<Connection>& parameters, const QByteArray& name,
              const QList<Connection>& ports) {
  const auto list = [](const QList<Connection>& entries) {
    QByteArray text;
    for (const Connection& entry : entries) {
      if (!text.isEmpty()) text += ",\n";
      text += QByteArray("      .") + entry.first + "(" + entry.second + ")";
    }
    return text;
  };
  out += "  " + module;
  if (!parameters.isEmpty()) out += " #(\n" + list(parameters) + "\n  )";
  out += " " + name + " (\n" + list(ports) + "\n  );\n";
}

}  // namespace ost::verilog

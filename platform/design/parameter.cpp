// Values of parameters between Verilog, netlists and VHDL.
#include "platform/design/parameter.h"

#include <QRegularExpression>

#include "platform/text/byte_text.h"
#include "platform/text/names.h"

namespace ost {
namespace {

QByteArray binary(quint64 value, int width) {
  QByteArray digits;
  for (int i = width - 1; i >= 0; --i) digits += i < 64 && (value >> i & 1) ? '1' : '0';
  return digits;
}

/// The digits of a based literal as binary ones, without regard to its width.
QByteArray basedDigits(const QByteArray& digits, char base) {
  if (base == 'd') return binary(digits.toULongLong(), 64);
  const int size = base == 'h' ? 4 : base == 'o' ? 3 : 1;
  QByteArray bits;
  for (const char digit : digits) {
    if (digit == 'x' || digit == 'z' || digit == '?')
      bits += QByteArray(size, digit == 'x' ? 'x' : 'z');
    else
      bits += binary(QByteArray(1, digit).toUInt(nullptr, 16), size);
  }
  return bits;
}

QByteArray fitted(QByteArray bits, int width, char fill) {
  bits = bits.right(width);
  if (bits.size() < width) bits.prepend(QByteArray(width - bits.size(), fill));
  return bits;
}

bool parseNumber(const QByteArray& typed, ParameterValue& value) {
  static const QRegularExpression decimal(QStringLiteral("\\A[+-]?[0-9][0-9_]*\\z")),
      based(QStringLiteral("\\A([1-9][0-9]{0,4})?'[sS]?(?:([bB])([01xXzZ?_]+)|([oO])([0-7xXzZ?_]+)|"
                           "([hH])([0-9a-fA-FxXzZ?_]+)|([dD])([0-9_]+))\\z"));
  const QString text = textFromBytes(typed);
  if (decimal.match(text).hasMatch()) {
    bool fits = false;
    const qint64 number = QByteArray(typed).replace('_', "").toLongLong(&fits);
    const bool isInteger = number >= -(qint64(1) << 31) && number < (qint64(1) << 31);
    value.text = binary(quint64(number), isInteger ? 32 : 64);
    return fits;
  }
  const QRegularExpressionMatch match = based.match(text);
  if (!match.hasMatch()) return false;
  for (int group = 2; group <= 8; group += 2) {
    if (match.captured(group).isEmpty()) continue;
    const char base = char(match.captured(group).toLower().at(0).toLatin1());
    const QByteArray bits = basedDigits(match.captured(group + 1).toLower().toLatin1().replace('_', ""), base);
    const char first = bits.isEmpty() ? '0' : bits[0];
    value.text = fitted(bits, match.captured(1).isEmpty() ? 32 : match.captured(1).toInt(), first == '1' ? '0' : first);
    return true;
  }
  return false;
}

/// The characters of a string that was passed as bits.
QByteArray characters(const QByteArray& bits) {
  QByteArray text;
  const QByteArray whole = fitted(bits, (bits.size() + 7) / 8 * 8, '0');
  for (int i = 0; i < whole.size(); i += 8) {
    const char c = char(whole.mid(i, 8).toUInt(nullptr, 2));
    if (c) text += c;
  }
  return text;
}

}  // namespace

bool parseTopParameter(const QString& assignment, TopParameter& parameter, QString& error) {
  const int equals = assignment.indexOf(QLatin1Char('='));
  const QString name = assignment.left(equals);
  QByteArray typed = equals < 0 ? QByteArray() : assignment.mid(equals + 1).toLatin1();
  if (equals < 0 || !isVerilogIdentifier(name)) {
    error = QStringLiteral("\"%1\" does not set a parameter; write NAME=VALUE.").arg(assignment);
    return false;
  }
  parameter.name = name.toLatin1();
  static const QRegularExpression real(QStringLiteral("\\A[+-]?[0-9][0-9_]*(\\.[0-9_]+)?([eE][+-]?[0-9_]+)?\\z"));
  if (parseNumber(typed, parameter.value)) {
    parameter.verilog = typed;
    return true;
  }
  if (real.match(textFromBytes(typed)).hasMatch()) {
    error = QStringLiteral(
                "The value \"%2\" of the parameter \"%1\" is a real number or out of range; Yosys elaborates with "
                "integers of up to 64 bits, sized numbers (8'hff) and strings only.")
                .arg(name, textFromBytes(typed));
    return false;
  }
  const bool quotes = typed.size() >= 2 && typed.startsWith('"') && typed.endsWith('"');
  if (quotes) typed = typed.mid(1, typed.size() - 2);
  bool good = quotes || (!typed.isEmpty() && (isalpha(static_cast<unsigned char>(typed[0])) || typed[0] == '_'));
  for (const char c : typed) good &= static_cast<unsigned char>(c) >= ' ' && c != 0x7f && c != '"' && c != '\\';
  if (!good) {
    error = QStringLiteral(
                "The value \"%2\" of the parameter \"%1\" is neither a number (5, -5, 8'hff) nor a string; write a "
                "string in double quotes, without quotes, backslashes and control characters in it.")
                .arg(name, textFromBytes(typed));
    return false;
  }
  parameter.value = {true, typed};
  parameter.verilog = '"' + typed + '"';
  return true;
}

ParameterValue netlistParameter(const QByteArray& written) {
  // Yosys adds a blank to a string that could be taken for a number.
  QByteArray digits = written;
  while (digits.endsWith(' ')) digits.chop(1);
  bool number = !digits.isEmpty();
  for (const char c : qAsConst(digits)) number &= c == '0' || c == '1' || c == 'x' || c == 'z';
  if (!number) return {true, written};
  if (digits.size() == written.size()) return {false, written};
  return {true, written.left(written.size() - 1)};
}

bool genericText(const ParameterValue& value, const QByteArray& type, QByteArray& text) {
  const QByteArray mark = type.split('(').first().trimmed();
  if (mark.isEmpty() || mark == "real" || mark == "time") return false;
  if (value.isText) {
    text = value.text;
    const bool isNumber = mark == "integer" || mark == "natural" || mark == "positive";
    return !isNumber && (mark != "boolean" || text.toLower() == "true" || text.toLower() == "false");
  }
  if (mark == "string") {
    text = characters(value.text);
    return true;
  }
  if (value.text.contains('x') || value.text.contains('z')) return false;
  if (mark == "boolean") {
    text = value.text.contains('1') ? "true" : "false";
    return true;
  }
  if (mark.endsWith("std_logic") || mark.endsWith("std_ulogic") || mark == "bit") {
    text = QByteArray("'") + value.text.right(1) + '\'';
    return true;
  }
  static const QRegularExpression range(QStringLiteral("\\(\\s*(\\d+)\\s+(?:downto|to)\\s+(\\d+)\\s*\\)"));
  if (mark.endsWith("vector") || mark.endsWith("unsigned") || mark.endsWith("signed")) {
    const QRegularExpressionMatch match = range.match(textFromBytes(type));
    const int width = match.hasMatch() ? qAbs(match.captured(1).toInt() - match.captured(2).toInt()) + 1 : -1;
    text = width < 0 ? value.text : fitted(value.text, width, '0');
    return true;
  }
  if (value.text.size() > 64) return false;
  const bool negative = value.text.size() >= 32 && value.text.startsWith('1');
  text = QByteArray::number(qint64(fitted(value.text, 64, negative ? '1' : '0').toULongLong(nullptr, 2)));
  return true;
}

}  // namespace ost

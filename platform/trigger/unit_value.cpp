// The digits of trigger unit values.
#include "platform/trigger/unit_value.h"

#include <vector>

#include "platform/text/names.h"

namespace ost {

namespace {

bool isEdge(Operator op) {
  return op == Operator::RisingEdge || op == Operator::FallingEdge;
}

bool comparesNumbers(Operator op) {
  return !isEdge(op) && op != Operator::SerialCompare;
}

/// Decimal digits to bits, least significant first and without leading zeros.
QByteArray decimalBits(const QString& digits) {
  const quint64 kBase = 1000000000;  // nine digits at a time
  std::vector<quint32> words;        // little-endian
  for (int i = 0; i < digits.size();) {
    const int count = (digits.size() - i) % 9 ? (digits.size() - i) % 9 : 9;
    quint64 carry = digits.mid(i, count).toULongLong();
    for (quint32& word : words) {
      carry += word * kBase;
      word = quint32(carry);
      carry >>= 32;
    }
    if (carry) words.push_back(quint32(carry));
    i += count;
  }
  QByteArray bits;
  for (quint32 word : words)
    for (int i = 0; i < 32; ++i) bits += char('0' + ((word >> i) & 1));
  while (bits.endsWith('0')) bits.chop(1);
  return bits;
}

/// Binary, octal or hexadecimal digits to bits and mask, least significant first. False at a digit that does not
/// belong there.
bool digitBits(int bitsPerDigit, const QString& digits, bool allowDontCare, QByteArray& value, QByteArray& mask) {
  for (int i = digits.size() - 1; i >= 0; --i) {
    const char c = digits[i].toLower().toLatin1();
    if ((c == 'x') && allowDontCare) {
      value.append(QByteArray(bitsPerDigit, '0'));
      mask.append(QByteArray(bitsPerDigit, '0'));
      continue;
    }
    const int digit = c >= '0' && c <= '9' ? c - '0' : c >= 'a' && c <= 'f' ? c - 'a' + 10 : 16;
    if (digit >= 1 << bitsPerDigit) return false;
    for (int bit = 0; bit < bitsPerDigit; ++bit) value.append(char('0' + ((digit >> bit) & 1)));
    mask.append(QByteArray(bitsPerDigit, '1'));
  }
  return true;
}

QString digitRule(Radix radix, bool allowDontCare) {
  static const char* const rules[] = {"0 and 1", "0 to 7", "0 to 9", "0 to 9 and A to F"};
  return QStringLiteral("%1 digits are %2%3.")
      .arg(radixText(radix), QLatin1String(rules[int(radix)]),
           QLatin1String(allowDontCare ? ", and x for don't-care" : ""));
}

/// parseUnitValue() without names.
bool parseDigits(Operator op, Radix radix, const QString& digits, int width, QByteArray& value, QByteArray& mask,
                 QString& error) {
  const bool serial = op == Operator::SerialCompare, decimal = radix == Radix::Dec;
  const bool allowDontCare = (op == Operator::Equal || op == Operator::NotEqual) && !decimal;
  const int bitsPerDigit = radix == Radix::Bin ? 1 : radix == Radix::Oct ? 3 : 4;
  value.clear();
  mask.clear();
  if (digits.isEmpty()) {
    error = QLatin1String("The value is empty: ") + digitRule(radix, allowDontCare);
  } else if (width < 1 || width > kMaxUnitWidth) {
    error = QStringLiteral("A unit compares 1 to %1 bits, not %2.").arg(kMaxUnitWidth).arg(width);
  } else if (serial && width != 1) {
    error = QStringLiteral("%1 watches one signal, not %2 bits.").arg(operatorText(op)).arg(width);
  } else if (serial && decimal) {
    error = QStringLiteral("%1 takes a bit pattern: give it in radix bin, oct or hex.").arg(operatorText(op));
  } else if (serial && digits.size() > kMaxSerialPattern / bitsPerDigit) {
    error = QStringLiteral("A %1 pattern has at most %2 samples.").arg(operatorText(op)).arg(kMaxSerialPattern);
  } else if (digits.size() > kMaxUnitWidth + bitsPerDigit) {
    error = QStringLiteral("The value has too many digits for %1 bits.").arg(width);
  } else if (decimal) {
    for (QChar c : digits)
      if (c < QLatin1Char('0') || c > QLatin1Char('9'))
        error = QStringLiteral("%1 is not a decimal number. ").arg(quoted(digits)) + digitRule(radix, false);
    if (error.isEmpty()) value = decimalBits(digits);
    mask = QByteArray(qMax(width, value.size()), '1');
  } else if (!digitBits(bitsPerDigit, digits, allowDontCare, value, mask)) {
    error = QStringLiteral("%1 does not fit here: ").arg(quoted(digits)) + digitRule(radix, allowDontCare);
  }
  if (!error.isEmpty()) return false;
  if (serial) return true;

  for (int bit = width; bit < value.size(); ++bit) {
    if (value[bit] == '0') continue;
    error = QStringLiteral("The value %1 needs more than the %2 bits that are compared.")
                .arg(quoted(digits), QString::number(width));
    return false;
  }
  const bool extendsDontCare = digits.startsWith(QLatin1Char('x'), Qt::CaseInsensitive);
  while (value.size() < width) value.append('0');
  while (mask.size() < width) mask.append(extendsDontCare ? '0' : '1');
  value.truncate(width);
  mask.truncate(width);
  if (!isEdge(op)) return true;
  if (!value.contains('1')) {
    error = QStringLiteral("With %1 the value is a mask of the bits to watch; it must have a 1.").arg(operatorText(op));
    return false;
  }
  mask = value;
  return true;
}

}  // namespace

bool parseUnitValue(Operator op, Radix radix, const QString& digits, int width, QByteArray& value, QByteArray& mask,
                    QString& error, const EnumNames& names) {
  const bool isNumber = parseDigits(op, radix, digits, width, value, mask, error);
  if (names.isEmpty() || !comparesNumbers(op)) return isNumber;
  const EnumName* named = findEnumName(names, digits);
  if (!named) {
    if (isNumber || !mayNameValue(op, digits)) return isNumber;
    constexpr int kShownNames = 8;
    QStringList known;
    for (const EnumName& entry : names.mid(0, kShownNames)) known << entry.name;
    error +=
        QStringLiteral(" The type of the signal names %1%2.")
            .arg(known.join(QStringLiteral(", ")), names.size() > kShownNames ? QStringLiteral(", ...") : QString());
    return false;
  }
  if (isNumber && (value != named->bits || mask.contains('0'))) {
    error =
        QStringLiteral(
            "%1 is a number in radix %2 and the name of another value; write the number as %3, or use another "
            "radix.")
            .arg(quoted(digits), radixText(radix),
                 quoted(QLatin1Char(digits.startsWith(QLatin1Char('x'), Qt::CaseInsensitive) ? 'x' : '0') + digits));
    return false;
  }
  value = named->bits;
  mask = QByteArray(width, '1');
  error.clear();
  return true;
}

bool mayNameValue(Operator op, const QString& text) {
  return comparesNumbers(op) && isVerilogIdentifier(QString(text).replace(QLatin1String("::"), QLatin1String("_")));
}

bool formatUnitValue(Radix radix, const QByteArray& value, const QByteArray& mask, QString& digits) {
  digits.clear();
  if (radix == Radix::Dec) {
    if (mask.contains('0')) return false;
    QByteArray decimal("0");  // least significant digit first
    for (int bit = value.size() - 1; bit >= 0; --bit) {
      int carry = value[bit] - '0';
      for (char& digit : decimal) {
        carry += 2 * (digit - '0');
        digit = char('0' + carry % 10);
        carry /= 10;
      }
      if (carry) decimal.append(char('0' + carry));
    }
    for (char digit : decimal) digits.prepend(QLatin1Char(digit));
    return true;
  }
  const int bitsPerDigit = radix == Radix::Bin ? 1 : radix == Radix::Oct ? 3 : 4;
  for (int low = 0; low < value.size(); low += bitsPerDigit) {
    const QByteArray care = mask.mid(low, bitsPerDigit), bits = value.mid(low, bitsPerDigit);
    if (care.contains('0') && care.contains('1')) return false;
    int digit = 0;
    for (int bit = 0; bit < bits.size(); ++bit) digit |= (bits[bit] - '0') << bit;
    digits.prepend(care.contains('0') ? QStringLiteral("x") : QString::number(digit, 16).toUpper());
  }
  return true;
}

}  // namespace ost

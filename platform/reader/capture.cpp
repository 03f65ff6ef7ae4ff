// Packed sample bits and their digits.
#include "platform/reader/capture.h"

#include <algorithm>

namespace ost {

void BitTable::append(const char* bits) {
  const size_t start = size_t(rows_) * width_;
  words_.resize((start + width_ + 63) / 64, 0);
  for (int i = 0; i < width_; ++i)
    if (bits[i]) words_[(start + i) / 64] |= quint64(1) << ((start + i) % 64);
  ++rows_;
}

quint64 BitTable::field(int row, int first, int count) const {
  quint64 value = 0;
  for (int i = 0; i < count; ++i) value |= quint64(at(row, first + i)) << i;
  return value;
}

QByteArray Capture::probeBits(int row, const PlanProbe& probe) const {
  QByteArray bits;
  for (int position : probe.positions) bits += probeBit(row, position) ? '1' : '0';
  return bits;
}

namespace {

QByteArray groupedDigits(const QByteArray& bits, int groupSize) {
  QByteArray digits;
  const int lead = bits.size() % groupSize;
  for (int i = lead ? lead - groupSize : 0; i < bits.size(); i += groupSize) {
    int digit = 0;
    bool unknown = false;
    for (int j = qMax(i, 0); j < i + groupSize; ++j) {
      digit = digit * 2 + (bits[j] == '1');
      unknown = unknown || bits[j] == 'x';
    }
    digits += unknown ? 'x' : "0123456789abcdef"[digit];
  }
  return digits;
}

/// Decimal digits, most significant first, by doubling: works for any width.
QByteArray decimalDigits(const QByteArray& bits) {
  if (bits.contains('x')) return "x";
  QByteArray digits(1, 0);  // Least significant first, values 0 to 9.
  for (char bit : bits) {
    int carry = bit == '1';
    for (char& digit : digits) {
      const int doubled = digit * 2 + carry;
      digit = static_cast<char>(doubled % 10);
      carry = doubled / 10;
    }
    if (carry) digits += static_cast<char>(carry);
  }
  QByteArray text;
  for (int i = digits.size() - 1; i >= 0; --i) text += static_cast<char>('0' + digits[i]);
  return text;
}

}  // namespace

QByteArray valueText(const PlanProbe& probe, const QByteArray& bits, Radix radix) {
  QByteArray lowFirst = bits;
  std::reverse(lowFirst.begin(), lowFirst.end());
  const EnumName* named = findEnumValue(probe.names, lowFirst);
  return named ? named->name.toLatin1() : digitsOf(bits, radix);
}

QByteArray digitsOf(const QByteArray& bits, Radix radix) {
  switch (radix) {
    case Radix::Oct:
      return groupedDigits(bits, 3);
    case Radix::Dec:
      return decimalDigits(bits);
    case Radix::Hex:
      return groupedDigits(bits, 4);
    case Radix::Bin:
      break;
  }
  return bits;
}

}  // namespace ost

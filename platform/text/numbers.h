// Numbers as hardware counts them, and their digits.
#pragma once

#include <QtGlobal>

namespace ost {

/// 1, 2, 4, ... up to `largest`.
constexpr bool isPowerOfTwo(qint64 number, qint64 largest = Q_INT64_C(1) << 62) {
  return number > 0 && number <= largest && (number & (number - 1)) == 0;
}

/// Bits that hold 0 .. n-1; 0 for n <= 1.
constexpr int bitsFor(qint64 n) {
  int bits = 0;
  while ((qint64(1) << bits) < n) ++bits;
  return bits;
}

/// The least power of two that is not below `n`.
constexpr qint64 powerOfTwoFrom(qint64 n) {
  return qint64(1) << bitsFor(n);
}

}  // namespace ost

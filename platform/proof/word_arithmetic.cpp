// Sums, products, quotients, comparisons and shifts, bit by bit.
#include <algorithm>

#include "platform/proof/word_logic.h"

namespace ost {
namespace {

// Larger products and quotients are compared as functions of their operands.
constexpr size_t kMostPartialProducts = 64 * 64;

bool isFalse(Edge edge) {
  return edge == kFalse;
}

}  // namespace

Edges WordLogic::add(const Edges& a, const Edges& b, Edge carry, Edge* carryOut) {
  Edges sum;
  for (size_t i = 0; i < a.size(); ++i) {
    sum.push_back(graph_.xorOf({a[i], b[i], carry}));
    carry = graph_.majority(a[i], b[i], carry);
  }
  if (carryOut) *carryOut = carry;
  return sum;
}

Edges WordLogic::negate(const Edges& a, Edge when) {
  Edges turned;
  for (const Edge bit : a) turned.push_back(graph_.xorOf({bit, when}));
  return add(turned, Edges(a.size(), kFalse), when);
}

/// Of two words of the result's width; a constant is the multiplier, so that a product by a power of two is a shift.
Edges WordLogic::multiply(const Edges& a, const Edges& b) {
  const auto constants = [](const Edges& word) {
    return std::count_if(word.begin(), word.end(), [](Edge bit) { return bit <= kTrue; });
  };
  const bool swap = constants(a) > constants(b) || (constants(a) == constants(b) && a > b);
  const Edges& multiplicand = swap ? b : a;
  const Edges& multiplier = swap ? a : b;
  Edges sum(a.size(), kFalse);
  for (size_t i = 0; i < multiplier.size(); ++i) {
    if (multiplier[i] == kFalse) continue;
    Edges row(a.size(), kFalse);
    for (size_t k = i; k < a.size(); ++k) row[k] = graph_.andOf({multiplicand[k - i], multiplier[i]});
    sum = add(sum, row, kFalse);
  }
  return sum;
}

/// Of two words of equal width, without signs, by long division.
void WordLogic::divide(const Edges& a, const Edges& b, Edges& quotient, Edges& remainder) {
  const size_t width = a.size();
  quotient.assign(width, kFalse);
  remainder.assign(width, kFalse);
  Edges divisor = b;
  divisor.push_back(kFalse);
  for (size_t i = width; i-- > 0;) {
    Edges shifted{a[i]};
    shifted.insert(shifted.end(), remainder.begin(), remainder.end());
    Edges inverted;
    for (const Edge bit : divisor) inverted.push_back(graph_.invert(bit));
    Edge fits = kFalse;
    const Edges difference = add(shifted, inverted, kTrue, &fits);
    quotient[i] = fits;
    const Edges kept = choose(fits, difference, shifted);
    remainder.assign(kept.begin(), kept.end() - 1);
  }
}

Edge WordLogic::less(const Edges& a, const Edges& b, bool isSigned, bool orEqual) {
  Edges left = a, inverted;
  for (const Edge bit : b) inverted.push_back(graph_.invert(bit));
  if (isSigned && !left.empty()) {
    left.back() = graph_.invert(left.back());
    inverted.back() = graph_.invert(inverted.back());
  }
  Edge carry = kFalse;
  add(left, inverted, orEqual ? kFalse : kTrue, &carry);  // a - b, or a - b - 1
  return graph_.invert(carry);
}

Edge WordLogic::isBelow(const Edges& a, qint64 limit) {
  if (limit <= 0) return kFalse;
  if (a.size() < 62 && limit >= qint64(1) << a.size()) return kTrue;
  Edges bits;
  for (size_t i = 0; i < a.size(); ++i) bits.push_back(i < 62 && limit >> i & 1 ? kTrue : kFalse);
  return less(a, bits, false, false);
}

/// `width` bits from where `amount` says on; beyond the word comes `fill`.
Edges WordLogic::shiftRight(const Edges& a, const Edges& amount, size_t width, Edge fill) {
  Edges word = a;
  word.resize(std::max(width, a.size()), fill);
  for (size_t stage = 0; stage < amount.size(); ++stage) {
    const size_t step = stage < 40 ? size_t(1) << stage : word.size();
    Edges shifted(word.size(), fill);
    for (size_t i = 0; i + step < word.size(); ++i) shifted[i] = word[i + step];
    word = choose(amount[stage], shifted, word);
  }
  word.resize(width);
  return word;
}

Edges WordLogic::shiftLeft(Edges word, const Edges& amount, Edge fill) {
  for (size_t stage = 0; stage < amount.size(); ++stage) {
    const size_t step = stage < 40 ? size_t(1) << stage : word.size();
    Edges shifted(word.size(), fill);
    for (size_t i = step; i < word.size(); ++i) shifted[i] = word[i - step];
    word = choose(amount[stage], shifted, word);
  }
  return word;
}

Edges WordLogic::shift(const WordCell& cell, const Edges& a, const Edges& b, size_t width) {
  const QByteArray& type = cell.type;
  const bool aSigned = cell.number("A_SIGNED"), bSigned = cell.number("B_SIGNED");
  const size_t wide = std::max(width, a.size());
  if (type == "$shl" || type == "$sshl") return shiftLeft(extend(a, width, aSigned), b, kFalse);
  if (type == "$shr" || type == "$sshr") {
    const Edges word = extend(a, wide, aSigned);
    return shiftRight(word, b, width, type == "$sshr" && aSigned ? word.back() : kFalse);
  }
  // By a signed amount in both directions; what comes from outside is unknown for a part select.
  const Edge fill = type == "$shiftx" ? kUnknown : kFalse;
  Edges word = a;
  if (type == "$shift") word = extend(a, wide, aSigned);
  if (!bSigned || b.empty()) return shiftRight(word, b, width, fill);
  const Edges magnitude = negate(b, kTrue);
  Edges left = word;
  left.resize(wide, fill);
  left = shiftLeft(left, magnitude, fill);
  left.resize(width);
  return choose(b.back(), left, shiftRight(word, Edges(b.begin(), b.end() - 1), width, fill));
}

/// A function of two words without unknown bits.
Edges WordLogic::opaque(const QByteArray& name, Edges a, const Edges& b, size_t width, bool unknown) {
  const int known = symbol(name + ' ' + QByteArray::number(qulonglong(a.size())));
  a.insert(a.end(), b.begin(), b.end());
  Edges result;
  for (size_t i = 0; i < width; ++i) result.push_back(graph_.function(known, a, int(i), unknown));
  return result;
}

/// Replaces unknown bits by known ones. The result: whether one was unknown.
Edge WordLogic::takeKnown(Edges& word) {
  Edges unknown;
  for (Edge& bit : word) {
    bit = graph_.digital(bit);
    if (!graph_.mayBeUnknown(bit)) continue;
    const Rails rails = rails_.split(bit);
    unknown.push_back(graph_.andOf({rails.one, rails.zero}));
    bit = rails.one;
  }
  return any(unknown);
}

/// Arithmetic and shifts: one unknown bit in an operand (of a shift, in the amount) makes the result unknown.
Edges WordLogic::calculated(const WordCell& cell, Edges a, Edges b, size_t width) {
  const bool shifts = cell.type.startsWith("$sh") || cell.type.startsWith("$ssh");
  const bool exact = cell.type == "$eq" || cell.type == "$ne" || cell.type == "$eqx" || cell.type == "$nex";
  const Edge unknown = exact ? kFalse : graph_.orOf({takeKnown(b), shifts ? kFalse : takeKnown(a)});
  const Edges result = shifts ? shift(cell, a, b, width) : compareOrCalculate(cell, a, b, width);
  Edges bits = choose(unknown, Edges(result.size(), kUnknown), result);
  const bool comparison = cell.type.size() == 3;  // $lt and the like give one bit
  for (size_t i = 1; comparison && i < bits.size(); ++i) bits[i] = kFalse;
  return bits;
}

Edges WordLogic::compareOrCalculate(const WordCell& cell, Edges a, Edges b, size_t width) {
  const QByteArray& type = cell.type;
  const bool isSigned = cell.number("A_SIGNED") && cell.number("B_SIGNED");
  const bool division = type == "$div" || type == "$mod" || type == "$divfloor" || type == "$modfloor";
  const bool calculation = type == "$add" || type == "$sub" || type == "$mul";
  const size_t wide = calculation ? width : std::max({a.size(), b.size(), division ? width : 0});
  a = extend(std::move(a), wide, isSigned);
  b = extend(std::move(b), wide, isSigned);
  const auto oneBit = [&](Edge value) { return extend({value}, width, false); };
  if (type == "$eq" || type == "$ne" || type == "$eqx" || type == "$nex") {
    Edges same;
    const bool exact = type.endsWith('x') && (graph_.mayBeUnknown(a) || graph_.mayBeUnknown(b));
    const auto compare = [&](Edge one, Edge other) { same.push_back(graph_.invert(graph_.xorOf({one, other}))); };
    for (size_t i = 0; i < wide; ++i) {
      if (!exact) {
        compare(a[i], b[i]);
        continue;
      }
      const Rails one = rails_.split(a[i]), other = rails_.split(b[i]);
      for (Edge Rails::*rail : {&Rails::one, &Rails::zero, &Rails::floating}) compare(one.*rail, other.*rail);
    }
    const Edge equal = graph_.andOf(same);
    return oneBit(type.startsWith("$eq") ? equal : graph_.invert(equal));
  }
  const bool large = (division || type == "$mul") && wide * wide > kMostPartialProducts &&
                     std::count_if(b.begin(), b.end(), isFalse) + 2 < long(wide) &&
                     std::count_if(a.begin(), a.end(), isFalse) + 2 < long(wide);
  const Edge zero = graph_.invert(any(b));
  if (large || type == "$pow") {
    if (type == "$mul" && b < a) std::swap(a, b);
    const Edges result = opaque(type + (isSigned ? 's' : 'u'), a, b, width, type == "$pow");
    return division ? choose(zero, Edges(width, kUnknown), result) : result;
  }
  if (type == "$lt") return oneBit(less(a, b, isSigned, false));
  if (type == "$gt") return oneBit(less(b, a, isSigned, false));
  if (type == "$ge") return oneBit(graph_.invert(less(a, b, isSigned, false)));
  if (type == "$le") return oneBit(graph_.invert(less(b, a, isSigned, false)));
  if (type == "$add") return add(a, b, kFalse);
  if (type == "$sub") {
    for (Edge& bit : b) bit = graph_.invert(bit);
    return add(a, b, kTrue);
  }
  if (type == "$mul") return multiply(a, b);
  const Edge turnA = isSigned ? a.back() : kFalse, turnB = isSigned ? b.back() : kFalse;
  Edges quotient, remainder;
  divide(negate(a, turnA), negate(b, turnB), quotient, remainder);
  const Edge turn = graph_.xorOf({turnA, turnB});
  // A quotient rounded down is one less than one rounded towards 0, where the signs differ and something is left.
  const Edge down = type.endsWith("floor") ? graph_.andOf({turn, any(remainder)}) : kFalse;
  Edges result;
  if (type.startsWith("$div")) {
    result = add(negate(quotient, turn), Edges(wide, down), kFalse);
  } else {
    Edges correction;
    for (const Edge bit : b) correction.push_back(graph_.andOf({bit, down}));
    result = add(negate(remainder, turnA), correction, kFalse);
  }
  result = choose(zero, Edges(wide, kUnknown), result);
  result.resize(width);
  return result;
}

}  // namespace ost

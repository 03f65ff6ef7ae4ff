// Cells of words into nodes of bits.
#include "platform/proof/word_logic.h"

#include <QSet>
#include <algorithm>

namespace ost {
namespace {

// Larger products and quotients are compared as functions of their operands.
constexpr size_t kMostPartialProducts = 64 * 64;

Edges extend(Edges a, size_t width, bool isSigned) {
  a.resize(width, isSigned && !a.empty() ? a.back() : kFalse);
  return a;
}

bool isFalse(Edge edge) {
  return edge == kFalse;
}

const QSet<QByteArray>& gates() {
  static const QSet<QByteArray> names{"$_BUF_",  "$_NOT_",  "$_AND_",    "$_NAND_",  "$_OR_",  "$_NOR_",
                                      "$_XOR_",  "$_XNOR_", "$_ANDNOT_", "$_ORNOT_", "$_MUX_", "$_NMUX_",
                                      "$_AOI3_", "$_OAI3_", "$_AOI4_",   "$_OAI4_",  "$_TBUF_"};
  return names;
}

const QSet<QByteArray>& words() {
  static const QSet<QByteArray> names{
      "$not",        "$pos",       "$neg",         "$and",        "$or",          "$xor",       "$xnor",
      "$reduce_and", "$reduce_or", "$reduce_bool", "$reduce_xor", "$reduce_xnor", "$logic_not", "$logic_and",
      "$logic_or",   "$eq",        "$ne",          "$eqx",        "$nex",         "$lt",        "$le",
      "$gt",         "$ge",        "$add",         "$sub",        "$mul",         "$div",       "$mod",
      "$divfloor",   "$modfloor",  "$pow",         "$shl",        "$shr",         "$sshl",      "$sshr",
      "$shift",      "$shiftx",    "$mux",         "$pmux",       "$tribuf",      "$bwmux",     "$lut",
      "$slice",      "$concat"};
  return names;
}

}  // namespace

bool WordLogic::isKnown(const QByteArray& type) {
  return words().contains(type) || gates().contains(type);
}

int WordLogic::symbol(const QByteArray& name) {
  const auto known = symbols_.constFind(name);
  if (known != symbols_.constEnd()) return *known;
  names_.append(name);
  return *symbols_.insert(name, names_.size() - 1);
}

Edges WordLogic::add(const Edges& a, const Edges& b, Edge carry, Edge* carryOut) {
  Edges sum;
  for (size_t i = 0; i < a.size(); ++i) {
    sum.push_back(graph_.xorOf({a[i], b[i], carry}));
    carry = graph_.majority(a[i], b[i], carry);
  }
  if (carryOut) *carryOut = carry;
  return sum;
}

Edges WordLogic::choose(Edge select, const Edges& whenSet, const Edges& whenClear) {
  Edges result;
  for (size_t i = 0; i < whenSet.size(); ++i) result.push_back(graph_.mux(select, whenSet[i], whenClear[i]));
  return result;
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

Edges WordLogic::opaque(const QByteArray& name, Edges a, const Edges& b, size_t width) {
  const int known = symbol(name + ' ' + QByteArray::number(qulonglong(a.size())));
  a.insert(a.end(), b.begin(), b.end());
  for (Edge& bit : a) bit = graph_.digital(bit);
  Edges result;
  for (size_t i = 0; i < width; ++i) result.push_back(graph_.function(known, a, int(i), true));
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
    const bool exact = type.endsWith('x');
    if (exact && (graph_.mayBeUnknown(a) || graph_.mayBeUnknown(b))) return oneBit(opaque(type, a, b, 1)[0]);
    Edges same;
    for (size_t i = 0; i < wide; ++i) same.push_back(graph_.invert(graph_.xorOf({a[i], b[i]})));
    const Edge equal = graph_.andOf(same);
    return oneBit(type.startsWith("$eq") ? equal : graph_.invert(equal));
  }
  const bool large = (division || type == "$mul") && wide * wide > kMostPartialProducts &&
                     std::count_if(b.begin(), b.end(), isFalse) + 2 < long(wide) &&
                     std::count_if(a.begin(), a.end(), isFalse) + 2 < long(wide);
  const bool known = !type.endsWith("floor") && type != "$pow";
  if (large || !known) {
    if ((type == "$add" || type == "$mul") && b < a) std::swap(a, b);
    Edges result = opaque(type + (isSigned ? 's' : 'u'), a, b, type.size() == 3 ? 1 : width);
    return extend(std::move(result), width, false);
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
  const Edge zero = graph_.invert(any(b));
  const Edge turnA = isSigned ? a.back() : kFalse, turnB = isSigned ? b.back() : kFalse;
  Edges quotient, remainder;
  divide(negate(a, turnA), negate(b, turnB), quotient, remainder);
  Edges result = type == "$div" ? negate(quotient, graph_.xorOf({turnA, turnB})) : negate(remainder, turnA);
  result = choose(zero, Edges(wide, kUnknown), result);
  result.resize(width);
  return result;
}

/// A parallel case is written with its branches in this order, and those of equal results joined.
Edges WordLogic::chooseByCell(const WordCell& cell) {
  const Edges a = cell.port("A"), b = cell.port("B"), s = cell.port(cell.type == "$tribuf" ? "EN" : "S");
  Edges result = a;
  if (cell.type == "$tribuf") return choose(s[0], a, Edges(a.size(), kFloating));
  if (cell.type == "$bwmux") {
    for (size_t i = 0; i < a.size(); ++i) result[i] = graph_.mux(s[i], b[i], a[i]);
    return result;
  }
  const auto branch = [&](size_t i) {
    return Edges(b.begin() + long(i * a.size()), b.begin() + long((i + 1) * a.size()));
  };
  std::vector<std::pair<Edges, Edges>> groups;  // selects, and the word
  QHash<QByteArray, size_t> groupOf;
  const auto key = [](const Edges& word) {
    return QByteArray(reinterpret_cast<const char*>(word.data()), int(word.size() * sizeof(Edge)));
  };
  for (size_t i = 0; i < s.size(); ++i) {
    const Edges word = branch(i);
    if (s.size() > 1 && word == a) continue;
    const auto known = groupOf.constFind(key(word));
    if (known != groupOf.constEnd()) {
      groups[*known].first.push_back(s[i]);
      continue;
    }
    groupOf.insert(key(word), groups.size());
    groups.push_back({{s[i]}, word});
  }
  for (auto group = groups.rbegin(); group != groups.rend(); ++group)
    result = choose(group->first.size() == 1 ? group->first[0] : any(group->first), group->second, result);
  return result;
}

Edges WordLogic::gate(const WordCell& cell) {
  const auto in = [&cell](const char* port) { return cell.port(port).at(0); };
  const auto both = [&](const char* x, const char* y) { return graph_.andOf({in(x), in(y)}); };
  const auto either = [&](const char* x, const char* y) { return graph_.orOf({in(x), in(y)}); };
  const QByteArray& type = cell.type;
  if (type == "$_BUF_") return {in("A")};
  if (type == "$_NOT_") return {graph_.invert(in("A"))};
  if (type == "$_AND_") return {both("A", "B")};
  if (type == "$_NAND_") return {graph_.invert(both("A", "B"))};
  if (type == "$_OR_") return {either("A", "B")};
  if (type == "$_NOR_") return {graph_.invert(either("A", "B"))};
  if (type == "$_XOR_") return {graph_.xorOf({in("A"), in("B")})};
  if (type == "$_XNOR_") return {graph_.invert(graph_.xorOf({in("A"), in("B")}))};
  if (type == "$_ANDNOT_") return {graph_.andOf({in("A"), graph_.invert(in("B"))})};
  if (type == "$_ORNOT_") return {graph_.orOf({in("A"), graph_.invert(in("B"))})};
  if (type == "$_MUX_") return {graph_.mux(in("S"), in("B"), in("A"))};
  if (type == "$_NMUX_") return {graph_.invert(graph_.mux(in("S"), in("B"), in("A")))};
  if (type == "$_TBUF_") return {graph_.mux(in("E"), in("A"), kFloating)};
  if (type == "$_AOI3_") return {graph_.invert(graph_.orOf({both("A", "B"), in("C")}))};
  if (type == "$_OAI3_") return {graph_.invert(graph_.andOf({either("A", "B"), in("C")}))};
  if (type == "$_AOI4_") return {graph_.invert(graph_.orOf({both("A", "B"), both("C", "D")}))};
  return {graph_.invert(graph_.andOf({either("A", "B"), either("C", "D")}))};  // $_OAI4_
}

Edges WordLogic::evaluate(const WordCell& cell) {
  const QByteArray& type = cell.type;
  if (!isKnown(type)) return {};
  if (type.startsWith("$_")) return gate(cell);
  if (type == "$mux" || type == "$pmux" || type == "$bwmux" || type == "$tribuf") return chooseByCell(cell);
  Edges a = cell.port("A");
  if (type == "$slice" || type == "$concat") {
    if (type == "$slice") {
      const auto from = a.begin() + cell.number("OFFSET");
      return Edges(from, from + cell.number("Y_WIDTH"));
    }
    const Edges b = cell.port("B");
    a.insert(a.end(), b.begin(), b.end());
    return a;
  }
  if (type == "$lut") {
    const QByteArray table = cell.bits("LUT");
    std::vector<Edges> words;
    for (int i = 0; i < 1 << a.size(); ++i) {
      const char digit = i < table.size() ? table[table.size() - 1 - i] : '0';
      words.push_back({digit == '1' ? kTrue : digit == '0' ? kFalse : kUnknown});
    }
    return lookUp(words, 1, a);
  }
  const size_t width = size_t(cell.number("Y_WIDTH"));
  const bool isSigned = cell.number("A_SIGNED");
  const auto oneBit = [&](Edge value) { return extend({value}, width, false); };
  if (type == "$reduce_and") return oneBit(graph_.andOf(a));
  if (type == "$reduce_or" || type == "$reduce_bool") return oneBit(any(a));
  if (type == "$logic_not") return oneBit(graph_.invert(any(a)));
  if (type == "$reduce_xor") return oneBit(graph_.xorOf(a));
  if (type == "$reduce_xnor") return oneBit(graph_.invert(graph_.xorOf(a)));
  if (type == "$not" || type == "$pos" || type == "$neg") {
    a = extend(std::move(a), width, isSigned);
    if (type == "$pos") return a;
    if (type == "$neg") {
      const Edge unknown = takeKnown(a);
      return choose(unknown, Edges(width, kUnknown), negate(a, kTrue));
    }
    for (Edge& bit : a) bit = graph_.invert(bit);
    return a;
  }
  Edges b = cell.port("B");
  if (type == "$logic_and") return oneBit(graph_.andOf({any(a), any(b)}));
  if (type == "$logic_or") return oneBit(graph_.orOf({any(a), any(b)}));
  if (type == "$and" || type == "$or" || type == "$xor" || type == "$xnor") {
    const bool extendSigned = isSigned && cell.number("B_SIGNED");
    a = extend(std::move(a), width, extendSigned);
    b = extend(std::move(b), width, extendSigned);
    for (size_t i = 0; i < width; ++i)
      a[i] = type == "$and"   ? graph_.andOf({a[i], b[i]})
             : type == "$or"  ? graph_.orOf({a[i], b[i]})
             : type == "$xor" ? graph_.xorOf({a[i], b[i]})
                              : graph_.invert(graph_.xorOf({a[i], b[i]}));
    return a;
  }
  return calculated(cell, std::move(a), std::move(b), width);
}

Edges WordLogic::lookUp(const std::vector<Edges>& words, int width, const Edges& address) {
  std::vector<Edges> level = words;
  const Edges none(size_t(width), kUnknown);
  for (const Edge select : address) {
    std::vector<Edges> next;
    for (size_t i = 0; i < level.size(); i += 2)
      next.push_back(choose(select, i + 1 < level.size() ? level[i + 1] : none, level[i]));
    // Beyond the last word every address is unknown.
    level.swap(next);
    if (level.size() == 1 && words.size() == 0) break;
  }
  return level.empty() ? none : level[0];
}

}  // namespace ost

// Cells of words into nodes of bits.
#include "platform/proof/word_logic.h"

#include <QSet>
#include <algorithm>

namespace ost {
namespace {

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

Edges extend(Edges a, size_t width, bool isSigned) {
  a.resize(width, isSigned && !a.empty() ? a.back() : kFalse);
  return a;
}

bool WordLogic::isKnown(const QByteArray& type) {
  return words().contains(type) || gates().contains(type);
}

int WordLogic::symbol(const QByteArray& name) {
  const auto known = symbols_.constFind(name);
  if (known != symbols_.constEnd()) return *known;
  names_.append(name);
  return *symbols_.insert(name, names_.size() - 1);
}

Edges WordLogic::choose(Edge select, const Edges& whenSet, const Edges& whenClear) {
  Edges result;
  for (size_t i = 0; i < whenSet.size(); ++i) result.push_back(graph_.mux(select, whenSet[i], whenClear[i]));
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

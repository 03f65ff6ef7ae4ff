// Which nets a single-bit register is part of, found in one pass over the cells and one over the nets.
#include "platform/insert/ascending_nets.h"

#include <QSet>

#include "platform/netlist/module_index.h"

namespace ost {
namespace {

/// Types whose cells are written bit by bit, or are one bit wide: with set and reset, and those of gates.
bool isWrittenBitByBit(const QByteArray& type) {
  return type == "$sr" || type.startsWith("$dffsr") || type == "$dlatchsr" || type.startsWith("$_");
}
bool isRegister(const QByteArray& type) {
  for (const char* word : {"$dff", "$adff", "$sdff", "$aldff", "$dlatch", "$adlatch", "$sr", "$_DFF", "$_SDFF",
                           "$_ALDFF", "$_DLATCH", "$_SR_", "$ff", "$_FF_"})
    if (type.startsWith(word)) return true;
  return false;
}

/// The bits that a cell of one bit stores.
QSet<int> singleBits(const NetlistText& netlist, const NetlistModule& module) {
  QSet<int> bits;
  JsonCursor cells(netlist.text(), module.cells);
  std::string_view name, field;
  for (cells.enterObject(); cells.nextMember(name); cells.skipValue()) {
    const size_t start = cells.valueStart();
    JsonCursor cell(netlist.text(), start);
    QByteArray type;
    for (cell.enterObject(); type.isEmpty() && cell.nextMember(field);)
      if (field != "type" || !cell.readString(type)) cell.skipValue();
    if (!isRegister(type)) continue;
    const QVector<int> stored = readCell(netlist, start).ports.value("Q");
    if (stored.size() == 1 || isWrittenBitByBit(type))
      for (const int bit : stored) bits.insert(bit);
  }
  return bits;
}

/// In each member of the object at the offset (nets, or ports): "upto" becomes 0 where `bits` has one of its bits.
void turnRound(const NetlistText& netlist, size_t object, const QSet<int>& bits, TextEdits& edits) {
  JsonCursor nets(netlist.text(), object);
  std::string_view name, field;
  for (nets.enterObject(); nets.nextMember(name);) {
    TextSpan upto;
    bool stored = false;
    for (nets.enterObject(); nets.nextMember(field);) {
      const size_t start = nets.valueStart();
      QVector<int> own;
      if (field == "bits")
        readBits(nets, own);
      else
        nets.skipValue();
      if (field == "upto") upto = {start, nets.position()};
      for (const int bit : own) stored |= bits.contains(bit);
    }
    if (stored && upto.end) edits.replace(upto, "0");
  }
}

}  // namespace

void declareDescending(const NetlistText& netlist, const NetlistModule& module, TextEdits& edits) {
  const std::string_view text = netlist.text().substr(module.text.begin, module.text.end - module.text.begin);
  if (!module.cells || text.find("\"upto\"") == std::string_view::npos) return;
  const QSet<int> bits = singleBits(netlist, module);
  if (bits.isEmpty()) return;
  for (const size_t object : {module.ports, module.netNames})
    if (object) turnRound(netlist, object, bits, edits);
}

}  // namespace ost

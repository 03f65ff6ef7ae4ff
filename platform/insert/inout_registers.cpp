// Finds the registers on inouts, and what they hold at the start.
#include "platform/insert/inout_registers.h"

#include <QSet>
#include <algorithm>

namespace ost {

namespace {

/// Cheap: most modules have no inout, and are not read for this.
bool mayMeetInOut(const NetlistText& text, const NetlistModule& module) {
  const auto hasInOut = [](const NetlistModule& any) {
    return std::any_of(any.portList.begin(), any.portList.end(),
                       [](const NetlistPort& port) { return port.direction == NetlistPort::InOut; });
  };
  return hasInOut(module) ||
         std::any_of(module.instances.begin(), module.instances.end(), [&](const NetlistInstance& instance) {
           return instance.module >= 0 && hasInOut(text.module(instance.module));
         });
}

/// The output of a register's cell, and its place in the text.
bool readOutput(const NetlistText& text, size_t cell, InOutRegister& found) {
  JsonCursor cursor(text.text(), readCell(text, cell).connections);
  std::string_view port;
  cursor.enterObject();
  while (cursor.nextMember(port)) {
    const size_t start = cursor.valueStart();
    QVector<int> bits;
    if (!readBits(cursor, bits)) return false;
    if (port != "Q") continue;
    found.bits = bits;
    found.bitsSpan = {start, cursor.position()};
    return true;
  }
  return false;
}

/// The initial values of bits, which nets have as an attribute with the most significant first.
QHash<int, char> initialValues(const NetlistText& text, const NetlistModule& module) {
  QHash<int, char> values;
  if (!module.netNames) return values;
  JsonCursor cursor(text.text(), module.netNames);
  std::string_view net, field, attribute;
  cursor.enterObject();
  while (cursor.nextMember(net)) {
    QVector<int> bits;
    QByteArray initial;
    cursor.enterObject();
    while (cursor.nextMember(field)) {
      if (field == "bits") {
        readBits(cursor, bits);
      } else if (field == "attributes") {
        cursor.enterObject();
        while (cursor.nextMember(attribute))
          if (attribute == "init" && cursor.peek() == '"')
            cursor.readString(initial);
          else
            cursor.skipValue();
      } else {
        cursor.skipValue();
      }
    }
    for (int i = 0; i < std::min(bits.size(), initial.size()); ++i) {
      const char value = initial[initial.size() - 1 - i];
      if (value == '0' || value == '1') values.insert(bits[i], value);
    }
  }
  return values;
}

}  // namespace

std::vector<InOutRegister> registersOnInOuts(const NetlistBits& netlist, int number) {
  std::vector<InOutRegister> registers;
  const NetlistModule& module = netlist.text.module(number);
  if (!mayMeetInOut(netlist.text, module)) return registers;
  const ModuleIndex& index = netlist.index(number);
  std::vector<int> bits = index.inOutBits();
  for (const NetlistPort& port : module.portList)
    if (port.direction == NetlistPort::InOut) bits.insert(bits.end(), port.bits.begin(), port.bits.end());
  QSet<int> cells;
  for (const int bit : bits) {
    if (isConstantBit(bit)) continue;
    const LocalDriver driver = index.driver(bit);
    if (driver.kind != LocalDriver::Cell) continue;
    const IndexedCell& cell = index.cells()[size_t(driver.cell)];
    if ((cell.kind != CellKind::FlipFlop && cell.kind != CellKind::Latch) || cells.contains(driver.cell)) continue;
    cells.insert(driver.cell);
    InOutRegister found;
    if (readOutput(netlist.text, cell.offset, found)) registers.push_back(found);
  }
  if (registers.empty()) return registers;
  const QHash<int, char> values = initialValues(netlist.text, module);
  for (InOutRegister& found : registers)
    for (const int bit : found.bits) found.initial += values.value(bit, 'x');
  return registers;
}

}  // namespace ost

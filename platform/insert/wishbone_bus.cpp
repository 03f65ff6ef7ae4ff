// The Wishbone master's bus at the top: as ports, or shared with what drives the slave in the design.
#include "platform/insert/netlist_editor.h"
#include "platform/insert/netlist_members.h"
#include "platform/rtl/wishbone_writer.h"

namespace ost {
namespace {

/// The slave's port of a signal and the debug module's.
struct BusRow {
  WishboneSignal signal;
  const char* port;  ///< Null where the master drives 0.
};
const BusRow kInputs[] = {{WishboneSignal::Cycle, "wb_cyc"},    {WishboneSignal::Strobe, "wb_stb"},
                          {WishboneSignal::Write, "wb_we"},     {WishboneSignal::Address, "wb_adr"},
                          {WishboneSignal::DataIn, "wb_dat_o"}, {WishboneSignal::Select, "wb_sel"},
                          {WishboneSignal::Type, nullptr},      {WishboneSignal::Burst, nullptr}};
const BusRow kAnswers[] = {
    {WishboneSignal::Ack, "wb_ack"}, {WishboneSignal::Error, "wb_err"}, {WishboneSignal::Retry, "wb_rty"}};

}  // namespace

void NetlistEditor::chooseBusNames(const std::function<bool(const QByteArray&)>& taken) {
  QByteArray prefix = "ostrel_wb_";
  const auto prefixTaken = [&] {
    for (const DebugPort& port : wishbonePorts(*plan_.wishbone))
      if (taken(wishbonePortName(port, prefix))) return true;
    return false;
  };
  for (int number = 1; prefixTaken(); ++number) prefix = "ostrel" + QByteArray::number(number) + "_wb_";
  plan_.wishbone->portPrefix = QString::fromLatin1(prefix);
}

/// Whoever is at the ports sees the master alone: no one else is on its bus.
NetlistEditor::BusBits NetlistEditor::exposeBus(Additions& additions) const {
  BusBits bus;
  for (const DebugPort& port : wishbonePorts(*plan_.wishbone)) {
    const QByteArray name = wishbonePortName(port, plan_.wishbone->portPrefix.toLatin1());
    QVector<int> bits{kBit0};
    if (!name.isEmpty() || port.output) bits = newBits(additions, port.width);
    bus.insert(port.name, bits);
    if (name.isEmpty()) continue;
    additions.ports += portText(name, port.output ? "output" : "input", bits);
    additions.nets += netText(name, bits);
  }
  return bus;
}

/// `byDefault` while the bit `select` is 0, else `other`.
QVector<int> NetlistEditor::choose(const QVector<int>& byDefault, const QVector<int>& other, int select,
                                   Additions& additions) const {
  const QVector<int> chosen = newBits(additions, byDefault.size());
  additions.cells += ",\n        \"$ostrel$" + QByteArray::number(additions.nextCell++) +
                     "\": { \"hide_name\": 1, \"type\": \"$mux\", \"parameters\": { \"WIDTH\": \"" +
                     binary32(chosen.size()) +
                     "\" }, \"attributes\": { }, \"port_directions\": { \"A\": \"input\", \"B\": \"input\", \"S\": "
                     "\"input\", \"Y\": \"output\" }, \"connections\": { \"A\": " +
                     bitListText(byDefault) + ", \"B\": " + bitListText(other) + ", \"S\": " + bitListText({select}) +
                     ", \"Y\": " + bitListText(chosen) + " } }";
  return chosen;
}

/// Gives pins of a cell of the top other bits.
void NetlistEditor::reconnect(size_t cell, const QHash<QByteArray, QVector<int>>& pins) {
  const CellConnections known = readCell(netlist_.text, cell);
  JsonCursor cursor(netlist_.text.text(), known.connections);
  std::string_view key;
  for (cursor.enterObject(); cursor.nextMember(key);) {
    const QByteArray pin = unescapeJson(key);
    const size_t begin = cursor.valueStart();
    cursor.skipValue();
    if (pins.contains(pin)) edits_.replace({begin, cursor.position()}, bitListText(pins.value(pin)));
  }
  const int module =
      netlist_.text.module(netlist_.text.top())
          .instances[size_t(
              netlist_.text.module(netlist_.text.top()).instanceByName.value(plan_.wishbone->instance.toLatin1()))]
          .module;
  for (const NetlistPort& port : netlist_.text.module(module).portList) {
    if (!pins.contains(port.name) || known.ports.contains(port.name)) continue;
    const QByteArray member = ",\n            " + quoteJson(port.name) + ": ";
    if (known.directions)
      appendMembers(known.directions, member + (port.direction == NetlistPort::Output ? "\"output\"" : "\"input\""),
                    edits_);
    appendMembers(known.connections, member + bitListText(pins.value(port.name)), edits_);
  }
}

/// The slave gets the design's own bus while the master is idle, and then the design gets the slave's answers. The
/// data that the slave gives goes to both.
NetlistEditor::BusBits NetlistEditor::shareBus(Additions& additions) {
  const PlanWishbone& wishbone = *plan_.wishbone;
  const NetlistModule& top = netlist_.text.module(netlist_.text.top());
  const size_t cell = top.instances[size_t(top.instanceByName.value(wishbone.instance.toLatin1()))].cell;
  const QHash<QByteArray, QVector<int>> own = readCell(netlist_.text, cell).ports;
  BusBits bus;
  for (const DebugPort& port : wishbonePorts(wishbone))
    if (port.role == DebugPort::WishboneBus)
      bus.insert(port.name, port.output ? newBits(additions, port.width) : QVector<int>(port.width, kBit0));
  const int grant = bus.value(kWishboneGrant).first();

  QHash<QByteArray, QVector<int>> pins;
  for (const BusRow& row : kInputs) {
    const WishbonePin* pin = wishbone.pin(row.signal);
    if (!pin) continue;
    const QByteArray name = pin->port.toLatin1();
    QVector<int> design = own.value(name), ours(pin->width, kBit0);
    if (design.isEmpty()) design.fill(kBit0, pin->width);
    if (row.signal == WishboneSignal::Cycle) bus["wb_busy"] = design;
    if (row.port) ours = bus.value(row.port).mid(row.signal == WishboneSignal::Address ? wishbone.addressOffset : 0);
    pins.insert(name, choose(design, ours, grant, additions));
  }
  for (const BusRow& row : kAnswers) {
    const WishbonePin* pin = wishbone.pin(row.signal);
    if (!pin) continue;
    const QByteArray name = pin->port.toLatin1();
    const QVector<int> answer = newBits(additions, 1);
    pins.insert(name, answer);
    bus[row.port] = answer;
    if (own.contains(name) && !own.value(name).isEmpty())
      follow(choose(answer, {kBit0}, grant, additions), own.value(name), additions);
  }
  const QByteArray data = wishbone.pin(WishboneSignal::DataOut)->port.toLatin1();
  QVector<int> read = own.value(data);
  if (read.isEmpty()) pins.insert(data, read = newBits(additions, kWishboneWordBits));
  bus["wb_dat_i"] = read;
  reconnect(cell, pins);
  return bus;
}

}  // namespace ost

// Goes through the modules below an instance.
#include "platform/netlist/instance_outline.h"

#include "platform/design/mapped_cells.h"
#include "platform/text/byte_text.h"

namespace ost {
namespace {

/// Calls `visit` for the instance and all below it that have a body.
void forEachBelow(const NetlistBits& netlist, const PlacedBit& instance,
                  const std::function<void(const PlacedBit&)>& visit) {
  const NetlistModule& module = netlist.text.module(instance.module);
  if (module.blackBox) return;
  visit(instance);
  for (size_t i = 0; i < module.instances.size(); ++i) {
    if (module.instances[i].module < 0) continue;
    PlacedBit below = instance;
    below.path.push_back(int(i));
    below.module = module.instances[i].module;
    forEachBelow(netlist, below, visit);
  }
}

bool isRegisterBit(const ModuleIndex& index, int bit) {
  const LocalDriver driver = index.driver(bit);
  return driver.kind == LocalDriver::Cell && index.cells()[size_t(driver.cell)].kind == CellKind::FlipFlop;
}

/// The clock inputs of a cell of Yosys' own; empty for what has none.
QVector<int> clockBits(const NetlistText& netlist, const IndexedCell& cell) {
  if (cell.kind == CellKind::Instance || cell.kind == CellKind::Latch) return {};
  const CellConnections connections = readCell(netlist, cell.offset);
  const std::string_view type =
      netlist.text().substr(connections.typeSpan.begin, connections.typeSpan.end - connections.typeSpan.begin);
  const bool isMemory = type.find("\"$mem") == 0;
  if (cell.kind != CellKind::FlipFlop && !isMemory) return {};
  QVector<int> bits;
  for (const char* port : {"CLK", "C", "RD_CLK", "WR_CLK"}) bits += connections.ports.value(port);
  // An asynchronous read has a port for the clock, too.
  if (isMemory && connections.parameters.value("CLK_ENABLE", "1").count('1') == 0) bits.clear();
  return bits;
}

}  // namespace

BitSource sourceOf(const NetlistBits& netlist, const PlacedBit& bit) {
  LocalDriver ignored;
  const PlacedBit source = netlist.source(bit, ignored);
  return {source.path, source.bit};
}

std::set<BitSource> clocksOf(const NetlistBits& netlist, const PlacedBit& instance) {
  std::set<BitSource> clocks;
  forEachBelow(netlist, instance, [&](const PlacedBit& place) {
    std::set<int> bits;
    for (const IndexedCell& cell : netlist.index(place.module).cells())
      for (const int bit : clockBits(netlist.text, cell)) bits.insert(bit);
    PlacedBit clock = place;
    for (const int bit : bits) {
      clock.bit = bit;
      const BitSource source = sourceOf(netlist, clock);
      if (!isConstantBit(source.second)) clocks.insert(source);
    }
  });
  return clocks;
}

void forEachRegisterNet(const NetlistBits& netlist, const PlacedBit& instance,
                        const std::function<void(const RegisterNet&)>& visit) {
  forEachBelow(netlist, instance, [&](const PlacedBit& place) {
    const ModuleIndex& index = netlist.index(place.module);
    index.forEachPublicNet([&](const QByteArray& name, const QVector<int>& bits, bool hasInitialValue) {
      if (isGivenName(name)) return;
      int registers = 0;
      for (const int bit : bits) {
        const bool isRegister = isRegisterBit(index, bit);
        if (!isRegister && !isConstantBit(bit) && index.driver(bit).kind != LocalDriver::None) return;
        registers += isRegister;
      }
      if (registers > 0) visit({place, name, bits, hasInitialValue});
    });
  });
}

std::vector<FilledMemory> filledMemories(const NetlistBits& netlist, const PlacedBit& instance) {
  std::vector<FilledMemory> memories;
  forEachBelow(netlist, instance, [&](const PlacedBit& place) {
    const NetlistModule& module = netlist.text.module(place.module);
    if (!module.memories) return;
    std::set<QByteArray> written, filled;
    for (const IndexedCell& cell : netlist.index(place.module).cells()) {
      if (cell.kind != CellKind::Logic) continue;
      const CellConnections connections = readCell(netlist.text, cell.offset);
      const size_t length = connections.typeSpan.end - connections.typeSpan.begin;
      const std::string_view type = netlist.text.text().substr(connections.typeSpan.begin, length);
      QByteArray name = connections.parameters.value("MEMID");
      if (name.startsWith('\\')) name.remove(0, 1);
      if (type.find("\"$memwr") == 0) written.insert(name);
      if (type.find("\"$meminit") == 0) filled.insert(name);
    }
    JsonCursor cursor(netlist.text.text(), module.memories);
    std::string_view key, field;
    for (cursor.enterObject(); cursor.nextMember(key);) {
      qint64 start = 0, size = 0;
      for (cursor.enterObject(); cursor.nextMember(field);) {
        if (field == "start_offset")
          cursor.readInteger(start);
        else if (field == "size")
          cursor.readInteger(size);
        else
          cursor.skipValue();
      }
      const QByteArray name = unescapeJson(key);
      if (size > 0 && written.count(name) && filled.count(name))
        memories.push_back({place, name, int(start), int(start + size - 1)});
    }
  });
  return memories;
}

QVector<ModuleParameter> parametersOf(const NetlistText& netlist, int module) {
  JsonCursor cursor(netlist.text(), netlist.module(module).body);
  std::string_view section, key;
  QVector<ModuleParameter> parameters;
  cursor.enterObject();
  while (cursor.nextMember(section)) {
    if (section != "parameter_default_values") {
      cursor.skipValue();
      continue;
    }
    cursor.enterObject();
    while (cursor.nextMember(key)) {
      QByteArray written;
      if (cursor.peek() == '"' && cursor.readString(written))
        parameters.append({unescapeJson(key), netlistParameter(written)});
      else
        cursor.skipValue();
    }
  }
  return parameters;
}

bool outlineInstance(const Netlist& netlist, const QString& path, InstanceOutline& outline) {
  const NetlistBits& bits = netlist.bits();
  PlacedBit place;
  if (!bits.findInstance(path, place)) return false;
  const std::set<BitSource> clocks = clocksOf(bits, place);
  std::set<BitSource> shown;
  for (const NetlistPort& port : bits.text.module(place.module).portList) {
    InstancePort listed = {port.name, port.direction, false};
    for (const int bit : port.bits) {
      place.bit = bit;
      const BitSource source = sourceOf(bits, place);
      listed.isClock = listed.isClock || (port.direction == NetlistPort::Input && clocks.count(source) > 0);
      shown.insert(source);
    }
    outline.ports.push_back(listed);
  }
  forEachRegisterNet(bits, place, [&](const RegisterNet& net) {
    std::set<BitSource> sources;
    for (const int bit : net.bits)
      if (!isConstantBit(bit)) sources.insert({net.place.path, bit});
    for (const BitSource& source : sources)
      if (shown.count(source)) return;
    shown.insert(sources.begin(), sources.end());
    NetBit named;
    PlacedBit first = net.place;
    first.bit = net.bits.first();
    named.instancePath = bits.named(first).instancePath;
    named.net = textFromBytes(net.name);
    outline.registers.push_back(named);
  });
  return true;
}

}  // namespace ost

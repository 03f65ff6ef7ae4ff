// Cuts a module and writes what is left.
#include "platform/insert/module_cut.h"

#include <algorithm>
#include <set>

namespace ost {
namespace {

bool isRisingEdge(const CellConnections& cell) {
  return !cell.parameters.value("CLK_POLARITY", "1").endsWith('0');
}

/// "_12_" and the like: a net that had no name before it was written as Verilog, or a function's that was written for
/// it.
bool isWritersName(const QByteArray& net) {
  bool number = net.contains("$func$");
  if (net.size() > 2 && net.startsWith('_') && net.endsWith('_')) net.mid(1, net.size() - 2).toInt(&number);
  return number;
}

}  // namespace

ModuleCut::ModuleCut(const NetlistBits& netlist, int module, const QSet<QByteArray>& added)
    : netlist_(netlist),
      module_(netlist.text.module(module)),
      index_(netlist.index(module)),
      nextBit_(netlist.index(module).highestBit() + 1) {
  std::vector<TriState> buffers;
  std::vector<Memory> memories;
  for (const NetlistPort& port : module_.portList) addPorts("port|" + port.name, port.bits);
  for (const IndexedCell& indexed : index_.cells()) {
    const CellConnections cell = readCell(netlist.text, indexed.offset);
    const QByteArray type =
        unescapeJson(netlist.text.text().substr(cell.typeSpan.begin + 1, cell.typeSpan.end - cell.typeSpan.begin - 2));
    kept_.push_back(0);
    if (indexed.kind == CellKind::Instance) {
      const QByteArray name = module_.instances[size_t(indexed.instance)].name;
      cells_[name] = {type, cell.parameters};
      for (auto port = cell.ports.begin(); port != cell.ports.end(); ++port)
        addPorts("cell|" + name + '.' + port.key(), port.value());
    } else if (indexed.kind == CellKind::MemoryBlock) {
      const QByteArray name = "mem|" + cell.parameters.value("MEMID");
      cells_[name] = {type, cell.parameters};
      memories.push_back({name, cell});
    } else if (type == "$tribuf") {
      buffers.push_back({cell.ports.value("Y"), cell.ports.value("A"), cell.ports.value("EN").value(0, kBitX)});
    } else {
      kept_.back() = 1;
    }
  }
  QSet<int> named;
  for (const TriState& buffer : buffers) {
    named.insert(buffer.enable);
    for (const int bit : buffer.y) named.insert(bit);
  }
  for (const Memory& memory : memories)
    for (const QVector<int>& bits : memory.cell.ports)
      for (const int bit : bits) named.insert(bit);
  QHash<int, QByteArray> names;
  readNets(named, added, names);
  addTriStates(buffers, names);
  for (const Memory& memory : memories) addMemory(memory, names);
}

/// The order of a memory's read ports is chance, and so is that of write ports without priorities: they are put in that
/// of the names at them.
void ModuleCut::addMemory(const Memory& memory, const QHash<int, QByteArray>& names) {
  const QHash<QByteArray, QVector<int>>& ports = memory.cell.ports;
  for (const QByteArray kind : {"RD_", "WR_"}) {
    const int count = ports.value(kind + "CLK").size();
    const bool ordered = kind == "WR_" && memory.cell.parameters.value("WR_PRIORITY_MASK").contains('1');
    const auto bitsAt = [&](const QByteArray& port, int i) {
      const QVector<int> bits = ports.value(port);
      return bits.mid(i * bits.size() / count, bits.size() / count);
    };
    std::vector<std::pair<std::vector<std::set<QByteArray>>, int>> order;
    for (int i = 0; i < count; ++i) {
      std::vector<std::set<QByteArray>> key;
      for (const char* port : {"CLK", "DATA", "ADDR"}) {
        if (ordered) break;
        std::set<QByteArray> found;
        for (const int bit : bitsAt(kind + port, i))
          if (names.contains(bit)) found.insert(names[bit]);
        key.push_back(found);
      }
      order.push_back({key, i});
    }
    std::sort(order.begin(), order.end());
    for (int i = 0; i < count; ++i)
      for (auto port = ports.begin(); port != ports.end(); ++port)
        if (port.key().startsWith(kind))
          addPorts(memory.name + '.' + kind + QByteArray::number(i) + '.' + port.key().mid(3),
                   bitsAt(port.key(), order[size_t(i)].second));
  }
}

/// A buffer is known by what it drives, or inside an expression by its enable: of several names by the first one in the
/// alphabet, which is the same in both editions.
void ModuleCut::addTriStates(const std::vector<TriState>& buffers, const QHash<int, QByteArray>& names) {
  for (const TriState& buffer : buffers) {
    for (int i = 0; i < buffer.y.size() && i < buffer.a.size(); ++i) {
      QByteArray name = names.value(buffer.y[i]);
      if (name.isEmpty()) name = "by|" + names.value(buffer.enable) + '.' + QByteArray::number(i);
      name.prepend("tri|");
      while (ports_.count(name + ".Y|0")) name += '\'';
      addPorts(name + ".Y", {buffer.y[i]});
      addPorts(name + ".A", {buffer.a[i]});
      addPorts(name + ".EN", {buffer.enable});
    }
  }
}

void ModuleCut::addPorts(const QByteArray& prefix, const QVector<int>& bits) {
  for (int i = 0; i < bits.size(); ++i) ports_[prefix + '|' + QByteArray::number(i)].bit = bits[i];
}

void ModuleCut::direct() {
  // Nothing that is left drives the bit: it comes from outside, through the first of the ports that bear it.
  QSet<int> given;
  for (auto& [name, port] : ports_) {
    port.input = false;
    if (isConstantBit(port.bit) || given.contains(port.bit)) continue;
    const LocalDriver driver = index_.driver(port.bit);
    const bool driven = driver.kind == LocalDriver::Cell && kept_[size_t(driver.cell)];
    const bool undriven = driver.kind == LocalDriver::None && index_.inOutCells(port.bit).empty();
    if (driven || undriven) continue;
    port.input = true;
    given.insert(port.bit);
  }
}

std::map<QByteArray, CutRegister> ModuleCut::registers() const {
  std::map<QByteArray, CutRegister> result;
  for (size_t i = 0; i < kept_.size(); ++i) {
    const IndexedCell& indexed = index_.cells()[i];
    if (indexed.kind != CellKind::FlipFlop) continue;
    const CellConnections cell = readCell(netlist_.text, indexed.offset);
    const QVector<int> q = cell.ports.value("Q"), clock = cell.ports.value("CLK");
    QByteArray net;
    int position = 0;
    if (q.isEmpty() || clock.isEmpty() || !index_.nameOf(q.first(), net, position) || net.startsWith('$')) continue;
    result[net + '|' + QByteArray::number(position)] = {clock.first(), isRisingEdge(cell)};
  }
  return result;
}

bool ModuleCut::registerAt(const QByteArray& net, int position, CutRegister& result) const {
  QVector<int> bits;
  if (!index_.netBits(net, bits) || position >= bits.size()) return false;
  const LocalDriver driver = index_.driver(bits[position]);
  if (driver.kind != LocalDriver::Cell) return false;
  const IndexedCell& indexed = index_.cells()[size_t(driver.cell)];
  if (indexed.kind != CellKind::FlipFlop) return false;
  const CellConnections cell = readCell(netlist_.text, indexed.offset);
  const QVector<int> clock = cell.ports.value("CLK");
  if (clock.isEmpty()) return false;
  result = {clock.first(), isRisingEdge(cell)};
  return true;
}

/// Initial values; and the users' names of the bits `named`.
void ModuleCut::readNets(const QSet<int>& named, const QSet<QByteArray>& added, QHash<int, QByteArray>& names) {
  if (!module_.netNames) return;
  JsonCursor cursor(netlist_.text.text(), module_.netNames);
  std::string_view key, field, attribute;
  cursor.enterObject();
  while (cursor.nextMember(key)) {
    QVector<int> bits;
    QByteArray initial;
    qint64 hidden = 0;
    cursor.enterObject();
    while (cursor.nextMember(field)) {
      if (field == "bits") {
        readBits(cursor, bits);
      } else if (field == "hide_name") {
        cursor.readInteger(hidden);
      } else if (field == "attributes") {
        cursor.enterObject();
        while (cursor.nextMember(attribute)) {
          if (attribute == "init" && cursor.peek() == '"')
            cursor.readString(initial);
          else
            cursor.skipValue();
        }
      } else {
        cursor.skipValue();
      }
    }
    const QByteArray net = unescapeJson(key);
    const bool usable = !named.isEmpty() && !hidden && !isWritersName(net) && !added.contains(net);
    for (int i = 0; usable && i < bits.size(); ++i) {
      if (!named.contains(bits[i])) continue;
      const QByteArray name = net + '.' + QByteArray::number(i);
      QByteArray& known = names[bits[i]];
      if (known.isEmpty() || name < known) known = name;
    }
    if (initial.size() != bits.size() || bits.isEmpty()) continue;
    for (int i = 0; i < bits.size(); ++i) {
      const char digit = initial[initial.size() - 1 - i];
      if (digit == '0' || digit == '1') initial_.insert(bits[i], digit);
    }
    initialNets_[net] = bits;
  }
}

QByteArray ModuleCut::json(const QByteArray& name) const {
  const std::string_view text = netlist_.text.text();
  QByteArray json = quoteJson(name) + ": { \"attributes\": { }, \"ports\": {";
  const char* comma = "\n";
  for (const auto& [port, cut] : ports_) {
    json += comma + quoteJson(port) + ": { \"direction\": \"" + (cut.input ? "input" : "output") +
            "\", \"bits\": " + bitListText({cut.bit}) + " }";
    comma = ",\n";
  }
  json += "\n}, \"cells\": {";
  comma = "\n";
  if (module_.cells) {
    JsonCursor cursor(text, module_.cells);
    std::string_view key;
    size_t cell = 0;
    for (cursor.enterObject(); cursor.nextMember(key); ++cell) {
      cursor.skipValue();
      if (!kept_[cell]) continue;
      const size_t begin = size_t(key.data() - text.data()) - 1;
      json.append(comma).append(text.data() + begin, int(cursor.position() - begin));
      comma = ",\n";
    }
  }
  json += "\n}, \"netnames\": ";
  if (module_.netNames) {
    JsonCursor cursor(text, module_.netNames);
    cursor.skipValue();
    json.append(text.data() + module_.netNames, int(cursor.position() - module_.netNames));
  } else {
    json += "{ }";
  }
  return json + " }";
}

}  // namespace ost

// Cuts a module and writes what is left.
#include "platform/insert/module_cut.h"

#include <QSet>

namespace ost {
namespace {

bool isRisingEdge(const CellConnections& cell) {
  return !cell.parameters.value("CLK_POLARITY", "1").endsWith('0');
}

}  // namespace

ModuleCut::ModuleCut(const Netlist::Private& netlist, int module)
    : netlist_(netlist),
      module_(netlist.text.module(module)),
      index_(netlist.index(module)),
      nextBit_(netlist.index(module).highestBit() + 1) {
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
      for (auto port = cell.ports.begin(); port != cell.ports.end(); ++port)
        addPorts(name + '.' + port.key(), port.value());
    } else if (type == "$tribuf") {
      const QVector<int> y = cell.ports.value("Y"), a = cell.ports.value("A"), enable = cell.ports.value("EN");
      for (int i = 0; i < y.size() && i < a.size() && !enable.isEmpty(); ++i) {
        QByteArray net;
        int position = 0;
        if (!index_.nameOf(y[i], net, position)) continue;
        const QByteArray name = "tri|" + net + '.' + QByteArray::number(position);
        addPorts(name + ".Y", {y[i]});
        addPorts(name + ".A", {a[i]});
        addPorts(name + ".EN", {enable.first()});
      }
    } else {
      kept_.back() = 1;
    }
  }
  readInitialValues();
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

void ModuleCut::readInitialValues() {
  if (!module_.netNames) return;
  JsonCursor cursor(netlist_.text.text(), module_.netNames);
  std::string_view key, field, attribute;
  cursor.enterObject();
  while (cursor.nextMember(key)) {
    QVector<int> bits;
    QByteArray initial;
    cursor.enterObject();
    while (cursor.nextMember(field)) {
      if (field == "bits") {
        readBits(cursor, bits);
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
    if (initial.size() != bits.size() || bits.isEmpty()) continue;
    for (int i = 0; i < bits.size(); ++i) {
      const char digit = initial[initial.size() - 1 - i];
      if (digit == '0' || digit == '1') initial_.insert(bits[i], digit);
    }
    initialNets_[unescapeJson(key)] = bits;
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

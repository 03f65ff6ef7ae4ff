// Builds and queries the index of one module.
#include "platform/netlist/module_index.h"

#include <algorithm>

namespace ost {
namespace {

constexpr int kInput = 1, kInOut = 2, kFirstCell = 3;
constexpr int kWideNet = 64;  ///< Nets of so many bits are read once, others again whenever they are asked about.

CellKind kindOf(std::string_view type, bool instance) {
  if (instance) return CellKind::Instance;
  const auto begins = [type](std::string_view prefix) { return type.substr(0, prefix.size()) == prefix; };
  for (const char* flipFlop : {"$dff", "$adff", "$sdff", "$aldff", "$_DFF", "$_SDFF", "$_ALDFF"})
    if (begins(flipFlop)) return CellKind::FlipFlop;
  if (type == "$sr" || begins("$dlatch") || begins("$adlatch") || begins("$_DLATCH") || begins("$_SR_"))
    return CellKind::Latch;
  if (type == "$memrd" || type == "$memrd_v2") return CellKind::MemoryRead;
  if (type == "$mem" || type == "$mem_v2") return CellKind::MemoryBlock;
  return CellKind::Logic;
}

}  // namespace

CellConnections readCell(const NetlistText& netlist, size_t offset) {
  CellConnections cell;
  JsonCursor cursor(netlist.text(), offset);
  std::string_view field, key;
  cursor.enterObject();
  while (cursor.nextMember(field)) {
    const size_t start = cursor.valueStart();
    if (field == "type") {
      cursor.skipValue();
      cell.typeSpan = {start, cursor.position()};
    } else if (field == "connections") {
      cell.connections = start;
      cursor.enterObject();
      while (cursor.nextMember(key)) readBits(cursor, cell.ports[unescapeJson(key)]);
    } else if (field == "parameters") {
      cursor.enterObject();
      while (cursor.nextMember(key)) {
        if (cursor.peek() == '"')
          cursor.readString(cell.parameters[unescapeJson(key)]);
        else
          cursor.skipValue();
      }
    } else {
      if (field == "port_directions") cell.directions = start;
      cursor.skipValue();
    }
  }
  cell.end = cursor.position();
  return cell;
}

void PortBits::add(int port, const QVector<int>& bits) {
  for (int i = 0; i < bits.size(); ++i)
    if (!isConstantBit(bits[i])) places_.push_back({bits[i], port, i});
}

void PortBits::sort() {
  std::stable_sort(places_.begin(), places_.end(), [](const Place& a, const Place& b) { return a.bit < b.bit; });
}

std::pair<const PortBits::Place*, const PortBits::Place*> PortBits::find(int bit) const {
  const auto less = [](const Place& a, const Place& b) { return a.bit < b.bit; };
  return std::equal_range(places_.data(), places_.data() + places_.size(), Place{bit, 0, 0}, less);
}

ModuleIndex::ModuleIndex(const NetlistText& netlist, const NetlistModule& module) : netlist_(netlist) {
  for (size_t i = 0; i < module.portList.size(); ++i)
    if (module.portList[i].direction != NetlistPort::Output) inputs_.add(int(i), module.portList[i].bits);
  inputs_.sort();
  for (const NetlistPort& port : module.portList)
    for (const int bit : port.bits) {
      highestBit_ = std::max(highestBit_, bit);
      if (port.direction == NetlistPort::Input) noteDriver(bit, kInput, false);
      if (port.direction == NetlistPort::InOut) noteDriver(bit, kInOut, true);
    }
  if (module.cells) readCells(module);
  if (module.netNames) readNets(module.netNames);
  if (module.memories) {
    JsonCursor cursor(netlist.text(), module.memories);
    std::string_view key;
    for (cursor.enterObject(); cursor.nextMember(key); cursor.skipValue()) cellNames_.push_back(keep(key));
  }
  std::sort(cellNames_.begin(), cellNames_.end());
}

/// The unescaped key: a view of the text itself, or of a kept copy.
std::string_view ModuleIndex::keep(std::string_view rawKey) {
  if (rawKey.find('\\') == std::string_view::npos) return rawKey;
  const QByteArray plain = unescapeJson(rawKey);
  unescaped_.emplace_back(plain.constData(), size_t(plain.size()));
  return unescaped_.back();
}

void ModuleIndex::noteDriver(int bit, int code, bool weak) {
  if (isConstantBit(bit)) return;
  if (size_t(bit) >= driver_.size()) driver_.resize(std::max(size_t(bit) + 1, driver_.size() * 2));
  int& known = driver_[size_t(bit)];
  if (known == 0 || (known == kInOut && !weak)) known = code;
}

void ModuleIndex::readCells(const NetlistModule& module) {
  JsonCursor cursor(netlist_.text(), module.cells);
  std::string_view key;
  cursor.enterObject();
  while (cursor.nextMember(key)) {
    const std::string_view name = keep(key);
    if (!name.empty() && name[0] != '$') cellNames_.push_back(name);
    IndexedCell cell{cursor.valueStart(), -1, CellKind::Logic};
    const auto instance = module.instanceByName.constFind(QByteArray::fromRawData(name.data(), int(name.size())));
    if (instance != module.instanceByName.constEnd()) cell.instance = *instance;
    const int defined = cell.instance < 0 ? -1 : module.instances[size_t(cell.instance)].module;
    readOneCell(cursor, defined < 0 ? nullptr : &netlist_.module(defined), cell);
    cells_.push_back(cell);
  }
}

/// Directions are those of `definition` where the netlist has it, else the cell's own, which stand before its
/// connections.
void ModuleIndex::readOneCell(JsonCursor& cursor, const NetlistModule* definition, IndexedCell& cell) {
  std::string_view field, port, word;
  QHash<QByteArray, NetlistPort::Direction> directions;
  if (definition)
    for (const NetlistPort& known : definition->portList) directions.insert(known.name, known.direction);
  QVector<int> bits;
  cursor.enterObject();
  while (cursor.nextMember(field)) {
    if (field == "type") {
      cursor.readRawString(word);
      cell.kind = kindOf(word, cell.instance >= 0);
    } else if (field == "port_directions" && !definition) {
      cursor.enterObject();
      while (cursor.nextMember(port)) {
        cursor.readRawString(word);
        directions.insert(unescapeJson(port), portDirection(word));
      }
    } else if (field == "connections") {
      cursor.enterObject();
      while (cursor.nextMember(port)) {
        readBits(cursor, bits);
        noteConnection(directions.value(unescapeJson(port), NetlistPort::Input), bits);
      }
    } else {
      cursor.skipValue();
    }
  }
}

/// Of the cell that comes next into the list.
void ModuleIndex::noteConnection(NetlistPort::Direction direction, const QVector<int>& bits) {
  const int cell = int(cells_.size());
  for (const int bit : bits) {
    highestBit_ = std::max(highestBit_, bit);
    if (direction == NetlistPort::Output) noteDriver(bit, kFirstCell + cell, false);
    if (direction == NetlistPort::InOut && !isConstantBit(bit)) inOutCells_.emplace(bit, cell);
  }
}

void ModuleIndex::readNets(size_t offset) {
  JsonCursor cursor(netlist_.text(), offset);
  std::string_view key, field;
  QVector<int> bits;
  cursor.enterObject();
  while (cursor.nextMember(key)) {
    Net net{keep(key), cursor.valueStart(), false};
    cursor.enterObject();
    while (cursor.nextMember(field)) {
      if (field == "hide_name") {
        qint64 hide = 0;
        cursor.readInteger(hide);
        net.hidden = hide != 0;
      } else if (field == "bits") {
        readBits(cursor, bits);
        for (const int bit : bits) highestBit_ = std::max(highestBit_, bit);
      } else {
        cursor.skipValue();
      }
    }
    nets_.push_back(net);
  }
  std::sort(nets_.begin(), nets_.end(), [](const Net& a, const Net& b) { return a.name < b.name; });
}

const ModuleIndex::Net* ModuleIndex::findNet(const QByteArray& name) const {
  const std::string_view wanted(name.constData(), size_t(name.size()));
  const auto found = std::lower_bound(nets_.begin(), nets_.end(), wanted,
                                      [](const Net& net, std::string_view key) { return net.name < key; });
  return found != nets_.end() && found->name == wanted ? &*found : nullptr;
}

ModuleIndex::NetObject ModuleIndex::readObject(const Net& net) const {
  NetObject object;
  JsonCursor cursor(netlist_.text(), net.object);
  std::string_view field, attribute;
  cursor.enterObject();
  while (cursor.nextMember(field)) {
    if (field == "offset")
      cursor.readInteger(object.offset);
    else if (field == "upto")
      cursor.readInteger(object.upto);
    else if (field == "bits")
      readBits(cursor, object.bits);
    else if (field == "attributes")
      for (cursor.enterObject(); cursor.nextMember(attribute); cursor.skipValue())
        object.hasInitialValue = object.hasInitialValue || attribute == "init";
    else
      cursor.skipValue();
  }
  return object;
}

const ModuleIndex::NetObject& ModuleIndex::object(const Net& net) const {
  const auto known = wideNets_.find(&net);
  if (known != wideNets_.end()) return known->second;
  narrowNet_ = readObject(net);
  return narrowNet_.bits.size() < kWideNet ? narrowNet_ : wideNets_.emplace(&net, narrowNet_).first->second;
}

bool ModuleIndex::netBits(const QByteArray& net, QVector<int>& bits) const {
  const Net* found = findNet(net);
  if (!found) return false;
  bits = object(*found).bits;
  return true;
}

TextSpan ModuleIndex::netBitsSpan(const QByteArray& net) const {
  const Net* found = findNet(net);
  if (!found) return {};
  JsonCursor cursor(netlist_.text(), found->object);
  std::string_view field;
  cursor.enterObject();
  while (cursor.nextMember(field)) {
    const size_t start = cursor.valueStart();
    cursor.skipValue();
    if (field == "bits") return {start, cursor.position()};
  }
  return {};
}

bool ModuleIndex::nameOf(int bit, QByteArray& net, int& position) const {
  if (isConstantBit(bit)) return false;
  if (nameOfBit_.empty()) {
    std::vector<NameOfBit> names(size_t(highestBit_) + 1);
    for (size_t i = 0; i < nets_.size(); ++i) {
      const QVector<int> bits = readObject(nets_[i]).bits;
      for (int at = 0; at < bits.size(); ++at) {
        if (isConstantBit(bits[at])) continue;
        NameOfBit& known = names[size_t(bits[at])];
        if (known.net == 0 || (nets_[size_t(known.net) - 1].hidden && !nets_[i].hidden)) known = {int(i) + 1, at};
      }
    }
    nameOfBit_.swap(names);
  }
  if (size_t(bit) >= nameOfBit_.size() || nameOfBit_[size_t(bit)].net == 0) return false;
  const NameOfBit& found = nameOfBit_[size_t(bit)];
  const std::string_view name = nets_[size_t(found.net) - 1].name;
  net = QByteArray(name.data(), int(name.size()));
  position = found.position;
  return true;
}

int ModuleIndex::sourceIndex(const QByteArray& net, int position) const {
  const Net* found = findNet(net);
  if (!found) return -1;
  const NetObject& said = object(*found);
  if (said.bits.size() == 1 && said.offset == 0) return -1;
  return int(said.offset) + (said.upto ? said.bits.size() - 1 - position : position);
}

void ModuleIndex::forEachPublicNet(
    const std::function<void(const QByteArray& name, const QVector<int>& bits, bool hasInitialValue)>& visit) const {
  for (const Net& net : nets_) {
    if (net.hidden) continue;
    const NetObject said = readObject(net);
    visit(QByteArray(net.name.data(), int(net.name.size())), said.bits, said.hasInitialValue);
  }
}

LocalDriver ModuleIndex::driver(int bit) const {
  LocalDriver result;
  if (isConstantBit(bit) || size_t(bit) >= driver_.size()) return result;
  const int code = driver_[size_t(bit)];
  if (code == kInput) result.kind = LocalDriver::InputPort;
  if (code == kInOut) result.kind = LocalDriver::InOutPort;
  if (code >= kFirstCell) {
    result.kind = LocalDriver::Cell;
    result.cell = code - kFirstCell;
  }
  return result;
}

std::vector<int> ModuleIndex::inOutCells(int bit) const {
  std::vector<int> cells;
  const auto range = inOutCells_.equal_range(bit);
  for (auto entry = range.first; entry != range.second; ++entry) cells.push_back(entry->second);
  return cells;
}

std::vector<int> ModuleIndex::inOutBits() const {
  std::vector<int> bits;
  for (const auto& entry : inOutCells_) bits.push_back(entry.first);
  return bits;
}

bool ModuleIndex::nameTaken(const QByteArray& name) const {
  const std::string_view wanted(name.constData(), size_t(name.size()));
  return findNet(name) || std::binary_search(cellNames_.begin(), cellNames_.end(), wanted);
}

}  // namespace ost

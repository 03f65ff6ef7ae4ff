// Builds and queries the index of one module.
#include "platform/insert/module_index.h"

#include <algorithm>

namespace ost {
namespace {

constexpr int kInput = 1, kInOut = 2, kFirstCell = 3;

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

bool readNetBits(JsonCursor& cursor, QVector<int>& bits) {
  std::string_view field;
  cursor.enterObject();
  while (cursor.nextMember(field)) {
    if (field == "bits") return readBits(cursor, bits);
    cursor.skipValue();
  }
  return false;
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
  return cell;
}

ModuleIndex::ModuleIndex(const NetlistText& netlist, const NetlistModule& module) : netlist_(netlist) {
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
  std::string_view key, field, port, word;
  QHash<QByteArray, NetlistPort::Direction> directions;
  QVector<int> bits;
  cursor.enterObject();
  while (cursor.nextMember(key)) {
    const std::string_view name = keep(key);
    if (!name.empty() && name[0] != '$') cellNames_.push_back(name);
    IndexedCell cell{cursor.valueStart(), -1, CellKind::Logic};
    const int code = kFirstCell + int(cells_.size());
    const auto instance = module.instanceByName.constFind(QByteArray::fromRawData(name.data(), int(name.size())));
    if (instance != module.instanceByName.constEnd()) cell.instance = *instance;
    const NetlistModule* definition = nullptr;
    if (cell.instance >= 0) {
      const int index = module.instances[size_t(cell.instance)].module;
      if (index >= 0) definition = &netlist_.module(index);
    }
    directions.clear();
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
        if (definition)
          for (const NetlistPort& known : definition->portList) directions.insert(known.name, known.direction);
        cursor.enterObject();
        while (cursor.nextMember(port)) {
          readBits(cursor, bits);
          const NetlistPort::Direction direction = directions.value(unescapeJson(port), NetlistPort::Input);
          for (const int bit : bits) {
            highestBit_ = std::max(highestBit_, bit);
            if (direction == NetlistPort::Output) noteDriver(bit, code, false);
            if (direction == NetlistPort::InOut && !isConstantBit(bit)) inOutCells_.emplace(bit, int(cells_.size()));
          }
        }
      } else {
        cursor.skipValue();
      }
    }
    cells_.push_back(cell);
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

bool ModuleIndex::netBits(const QByteArray& net, QVector<int>& bits) const {
  const Net* found = findNet(net);
  if (!found) return false;
  JsonCursor cursor(netlist_.text(), found->object);
  return readNetBits(cursor, bits);
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
  QVector<int> bits;
  if (netOfBit_.empty()) {
    netOfBit_.resize(size_t(highestBit_) + 1);
    for (size_t i = 0; i < nets_.size(); ++i) {
      JsonCursor cursor(netlist_.text(), nets_[i].object);
      readNetBits(cursor, bits);
      for (const int id : bits) {
        if (isConstantBit(id)) continue;
        int& known = netOfBit_[size_t(id)];
        if (known == 0 || (nets_[size_t(known) - 1].hidden && !nets_[i].hidden)) known = int(i) + 1;
      }
    }
  }
  if (size_t(bit) >= netOfBit_.size() || netOfBit_[size_t(bit)] == 0) return false;
  const Net& found = nets_[size_t(netOfBit_[size_t(bit)]) - 1];
  JsonCursor cursor(netlist_.text(), found.object);
  if (!readNetBits(cursor, bits)) return false;
  net = QByteArray(found.name.data(), int(found.name.size()));
  position = bits.indexOf(bit);
  return position >= 0;
}

int ModuleIndex::sourceIndex(const QByteArray& net, int position) const {
  const Net* found = findNet(net);
  if (!found) return -1;
  JsonCursor cursor(netlist_.text(), found->object);
  std::string_view field;
  qint64 offset = 0, upto = 0;
  QVector<int> bits;
  cursor.enterObject();
  while (cursor.nextMember(field)) {
    if (field == "offset")
      cursor.readInteger(offset);
    else if (field == "upto")
      cursor.readInteger(upto);
    else if (field == "bits")
      readBits(cursor, bits);
    else
      cursor.skipValue();
  }
  if (bits.size() == 1 && offset == 0) return -1;
  return int(offset) + (upto ? bits.size() - 1 - position : position);
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

bool ModuleIndex::nameTaken(const QByteArray& name) const {
  const std::string_view wanted(name.constData(), size_t(name.size()));
  return findNet(name) || std::binary_search(cellNames_.begin(), cellNames_.end(), wanted);
}

}  // namespace ost

// Reads a module's cells and nets into a compact form.
#include "platform/proof/module_logic.h"

#include <QSet>
#include <algorithm>

#include "platform/text/byte_text.h"

namespace ost {
namespace {

bool begins(const QByteArray& type, std::initializer_list<const char*> prefixes) {
  return std::any_of(prefixes.begin(), prefixes.end(), [&type](const char* prefix) { return type.startsWith(prefix); });
}

bool isState(const QByteArray& type) {
  return begins(type, {"$dff", "$adff", "$sdff", "$aldff", "$dlatch", "$adlatch", "$_DFF", "$_SDFF", "$_DLATCH"}) ||
         type == "$sr";
}

bool isBitwise(const QByteArray& type) {
  static const QSet<QByteArray> types{"$not", "$pos", "$and", "$or", "$xor", "$xnor", "$mux", "$bwmux", "$tribuf"};
  return types.contains(type);
}

/// What a latch's enable is for good, or kBitX. Such a latch is written without one.
int constantEnable(const QByteArray& type, const CellConnections& cell) {
  const int enable = type == "$dlatch" ? cell.ports.value("EN").value(0, kBitX) : kBitX;
  if (enable != kBit0 && enable != kBit1) return kBitX;
  return cell.parameters.value("EN_POLARITY").contains('1') ? enable : kBit1 - enable;
}

}  // namespace

bool isMemoryRead(const QByteArray& type) {
  return type == "$memrd" || type == "$memrd_v2";
}

int LeafTable::number(const QByteArray& name) {
  const auto known = numbers.constFind(name);
  if (known != numbers.constEnd()) return *known;
  names.append(name);
  return *numbers.insert(name, names.size() - 1);
}

QByteArray bitName(const QByteArray& net, int position, int width) {
  return width == 1 ? net : net + '[' + QByteArray::number(position) + ']';
}

ModuleLogic::ModuleLogic(LogicGraph& graph, WordLogic& words, LeafTable& leaves, const NetlistBits& netlist, int module,
                         const PinOfType& low)
    : graph_(graph), words_(words), leaves_(leaves), netlist_(netlist), module_(netlist.text.module(module)) {
  instances_.resize(module_.instances.size());
  readMemories();
  if (module_.cells) readCells(low);
  if (module_.netNames) readNets();
  for (const NetlistPort& port : module_.portList)
    for (int i = 0; i < port.bits.size(); ++i) {
      highestBit_ = std::max(highestBit_, port.bits[i]);
      if (port.direction != NetlistPort::Output)
        driveByLeaf(port.bits[i], "port " + bitName(port.name, i, port.bits.size()));
    }
}

int ModuleLogic::intern(const QByteArray& text) {
  const auto known = textNumbers_.constFind(text);
  if (known != textNumbers_.constEnd()) return *known;
  texts_.append(text);
  return *textNumbers_.insert(text, texts_.size() - 1);
}

void ModuleLogic::readCells(const PinOfType& low) {
  JsonCursor cursor(netlist_.text.text(), module_.cells);
  std::string_view key;
  for (cursor.enterObject(); cursor.nextMember(key); cursor.skipValue()) {
    CellConnections read = readCell(netlist_.text, cursor.valueStart());
    graph_.work(64);
    for (const QVector<int>& bits : read.ports)
      for (const int bit : bits) highestBit_ = std::max(highestBit_, bit);
    const QByteArray name = unescapeJson(key);
    const int index = int(cells_.size());
    const auto instance = module_.instanceByName.constFind(name);
    if (instance != module_.instanceByName.constEnd()) {
      const int definition = module_.instances[size_t(*instance)].module;
      QHash<QByteArray, NetlistPort::Direction> directions;
      if (definition >= 0)
        for (const NetlistPort& port : netlist_.text.module(definition).portList)
          directions.insert(port.name, port.direction);
      // Of an undeclared module any pin may be an output.
      for (auto port = read.ports.begin(); port != read.ports.end(); ++port)
        if (directions.value(port.key(), NetlistPort::InOut) != NetlistPort::Input) {
          const bool isLow = port.key() == low.pin && module_.instances[size_t(*instance)].type == low.type;
          for (int i = 0; i < port->size(); ++i)
            if (isLow)
              drive(port->at(i), {Driver::Leaf, -1, int(kFalse)});
            else
              driveByLeaf(port->at(i), "pin " + name + '.' + bitName(port.key(), i, port->size()));
        }
      instances_[size_t(*instance)] = std::move(read);
      continue;
    }
    const std::string_view text = netlist_.text.text();
    QByteArray type = unescapeJson(text.substr(read.typeSpan.begin + 1, read.typeSpan.end - read.typeSpan.begin - 2));
    const int enable = constantEnable(type, read);
    if (enable == kBit0) {
      closedLatches_ += read.ports.value("Q");
      continue;
    }
    if (enable == kBit1) {
      read.parameters = {{"Y_WIDTH", read.parameters.value("WIDTH")}};
      read.ports = {{"A", read.ports.value("D")}, {"Y", read.ports.value("Q")}};
      type = "$pos";
    }
    Cell cell{intern(type),
              int(ports_.size()),
              int(read.ports.size()),
              int(parameters_.size()),
              int(read.parameters.size()),
              isBitwise(type)};
    for (auto port = read.ports.begin(); port != read.ports.end(); ++port) {
      ports_.push_back({intern(port.key()), int(pool_.size()), int(port->size())});
      pool_.insert(pool_.end(), port->begin(), port->end());
    }
    for (auto entry = read.parameters.begin(); entry != read.parameters.end(); ++entry)
      parameters_.push_back({intern(entry.key()), intern(entry.value())});
    cells_.push_back(cell);
    const QByteArray memory = plainMemory(parameter(cell, "MEMID"));
    if (isState(type)) {
      addState(index, bits(cell, "Q"));
    } else if (isMemoryRead(type)) {
      if (parameter(cell, "CLK_ENABLE").contains('1'))
        addState(index, bits(cell, "DATA"));
      else
        noteOutputs(index, bits(cell, "DATA"));
    } else if (type == "$memwr" || type == "$memwr_v2") {
      memories_[memory].writes.push_back(index);
    } else if (type == "$meminit" || type == "$meminit_v2") {
      memories_[memory].initials.push_back(index);
    } else if (WordLogic::isKnown(type)) {
      noteOutputs(index, bits(cell, "Y"));
    } else {
      refuse(
          QStringLiteral("it has a cell of the type \"%1\", which the proof does not know").arg(textFromBytes(type)));
    }
  }
  for (auto& [name, memory] : memories_) fillMemory(memory);
}

void ModuleLogic::readNets() {
  JsonCursor cursor(netlist_.text.text(), module_.netNames);
  std::string_view key, field, attribute;
  cursor.enterObject();
  while (cursor.nextMember(key)) {
    ModuleNet net;
    QByteArray initial;
    qint64 hidden = 0;
    cursor.enterObject();
    while (cursor.nextMember(field)) {
      if (field == "bits") {
        readBits(cursor, net.bits);
      } else if (field == "hide_name") {
        cursor.readInteger(hidden);
      } else if (field == "attributes") {
        QByteArray value;
        cursor.enterObject();
        while (cursor.nextMember(attribute)) {
          if (cursor.peek() != '"') {
            cursor.skipValue();
            continue;
          }
          cursor.readString(attribute == "init" ? initial : value);
          if (attribute == "keep") net.kept = value.contains('1');
        }
      } else {
        cursor.skipValue();
      }
    }
    for (int i = 0; i < net.bits.size(); ++i) {
      highestBit_ = std::max(highestBit_, net.bits[i]);
      const char digit = initial.size() > i ? initial[initial.size() - 1 - i] : 'x';
      if (digit == '0' || digit == '1') initial_.insert(net.bits[i], digit);
    }
    net.name = unescapeJson(key);
    if (!hidden) nets_.push_back(std::move(net));
  }
  std::sort(nets_.begin(), nets_.end(), [](const ModuleNet& a, const ModuleNet& b) { return a.name < b.name; });
  for (StateBit& state : states_) state.initial = initial_.value(state.bit, 'x');
  for (const int bit : closedLatches_) {
    const char initial = initial_.value(bit, 'x');
    drive(bit, {Driver::Leaf, -1, int(initial == '1' ? kTrue : initial == '0' ? kFalse : kUnknown)});
  }
}

const ModuleNet* ModuleLogic::net(const QByteArray& name) const {
  const auto found = std::lower_bound(nets_.begin(), nets_.end(), name,
                                      [](const ModuleNet& net, const QByteArray& key) { return net.name < key; });
  return found != nets_.end() && found->name == name ? &*found : nullptr;
}

QVector<int> ModuleLogic::bits(const Cell& cell, const char* port) const {
  for (int i = cell.firstPort; i < cell.firstPort + cell.ports; ++i)
    if (texts_[ports_[size_t(i)].name] == port) {
      const Port& found = ports_[size_t(i)];
      return QVector<int>(pool_.begin() + found.first, pool_.begin() + found.first + found.count);
    }
  return {};
}

QByteArray ModuleLogic::parameter(const Cell& cell, const char* name) const {
  for (int i = cell.firstParameter; i < cell.firstParameter + cell.parameters; ++i)
    if (texts_[parameters_[size_t(i)].first] == name) return texts_[parameters_[size_t(i)].second];
  return {};
}

int ModuleLogic::number(const Cell& cell, const char* name) const {
  return int(parameter(cell, name).right(32).toUInt(nullptr, 2));
}

void ModuleLogic::noteOutputs(int cell, const QVector<int>& bits) {
  for (int i = 0; i < bits.size(); ++i) drive(bits[i], {Driver::CellOutput, cell, i});
}

void ModuleLogic::driveByLeaf(int bit, const QByteArray& name) {
  drive(bit, {Driver::Leaf, -1, int(graph_.leaf(leaves_.number(name)))});
}

/// The bits of states become leaves when their partners on the other side are known; see connect().
void ModuleLogic::addState(int cell, const QVector<int>& bits) {
  for (int i = 0; i < bits.size(); ++i) {
    const int index = int(states_.size());
    states_.push_back({cell, i, bits[i]});
    stateAt_.emplace(bits[i], index);
    drive(bits[i], {Driver::State, index, 0});
  }
}

/// What drives one bit together with others gets a bit of its own.
void ModuleLogic::drive(int bit, const Driver& driver) {
  if (isConstantBit(bit)) return;
  if (size_t(bit) >= driver_.size()) driver_.resize(std::max(size_t(bit) + 1, driver_.size() * 2));
  Driver& known = driver_[size_t(bit)];
  if (known.kind == Driver::None) {
    known = driver;
    return;
  }
  if (known.kind != Driver::Several) {
    several_.push_back({known});
    known = {Driver::Several, int(several_.size()) - 1, 0};
  }
  several_[size_t(known.cell)].push_back(driver);
}

}  // namespace ost

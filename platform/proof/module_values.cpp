// Evaluates the bits of a module from their drivers on.
#include <algorithm>

#include "platform/proof/module_logic.h"

namespace ost {
namespace {

constexpr Edge kInProgress = kNoEdge - 1;

}  // namespace

int ModuleLogic::stateAt(int bit) const {
  const auto found = stateAt_.find(bit);
  return found == stateAt_.end() ? -1 : found->second;
}

int ModuleLogic::stateBehind(int bit) const {
  if (isConstantBit(bit) || size_t(bit) >= driver_.size()) return -1;
  const auto behind = [this](const Driver& driver) {
    if (driver.kind != Driver::CellOutput || typeOf(cells_[size_t(driver.cell)]) != "$pos") return -1;
    return stateAt(bits(cells_[size_t(driver.cell)], "A").value(driver.position, kBitX));
  };
  const Driver& driver = driver_[size_t(bit)];
  if (driver.kind != Driver::Several) return behind(driver);
  int found = -1;
  for (const Driver& one : several_[size_t(driver.cell)]) found = std::max(found, behind(one));
  return found;
}

void ModuleLogic::connect() {
  value_.assign(size_t(highestBit_) + 1, kNoEdge);
  driver_.resize(value_.size());
}

void ModuleLogic::cut(const NamedBit& named) {
  const ModuleNet* found = net(named.net);
  if (!found || named.position >= found->bits.size()) return;
  const int bit = found->bits[named.position];
  if (isConstantBit(bit) || stateAt_.count(bit)) return;
  StateBit state{-1, bit, bit};
  state.leaf = graph_.leaf(leaves_.number("net " + named.net + '[' + QByteArray::number(named.position) + ']'));
  stateAt_.emplace(bit, int(states_.size()));
  states_.push_back(state);
  value_[size_t(bit)] = state.leaf;
}

/// The bit of a bitwise cell's input that belongs to a bit of its output; a short operand is extended by its sign.
int ModuleLogic::operand(const Cell& cell, const Port& port, int position) const {
  const QByteArray& name = texts_[port.name];
  if (port.count == 1 && (name == "S" || name == "EN")) return pool_[size_t(port.first)];
  if (position < port.count) return pool_[size_t(port.first + position)];
  const QByteArray& type = typeOf(cell);
  const bool isSigned = number(cell, "A_SIGNED") && (type == "$not" || type == "$pos" || number(cell, "B_SIGNED"));
  return isSigned && port.count ? pool_[size_t(port.first + port.count - 1)] : kBit0;
}

void ModuleLogic::inputsOf(const Driver& driver, QVector<int>& inputs) const {
  if (driver.kind == Driver::Several)
    for (const Driver& one : several_[size_t(driver.cell)]) inputsOf(one, inputs);
  if (driver.kind != Driver::CellOutput) return;
  const Cell& cell = cells_[size_t(driver.cell)];
  for (int i = cell.firstPort; i < cell.firstPort + cell.ports; ++i) {
    const Port& port = ports_[size_t(i)];
    const QByteArray& name = texts_[port.name];
    if (name == "Y" || name == "DATA") continue;
    if (cell.isBitwise) {
      inputs.append(operand(cell, port, driver.position));
      continue;
    }
    for (int k = port.first; k < port.first + port.count; ++k) inputs.append(pool_[size_t(k)]);
  }
}

Edge ModuleLogic::value(int bit) {
  if (bit == kBitX) return kUnknown;
  if (bit == kBitZ) return kFloating;
  if (isConstantBit(bit)) return Edge(bit);
  if (value_[size_t(bit)] == kNoEdge) compute(bit);
  return value_[size_t(bit)];
}

Edges ModuleLogic::values(const QVector<int>& bits) {
  Edges result;
  for (const int bit : bits) result.push_back(value(bit));
  return result;
}

/// Depth first without recursion: a chain of logic may be as long as the module.
void ModuleLogic::compute(int bit) {
  std::vector<int> waiting{bit}, path;
  QVector<int> inputs;
  while (!waiting.empty()) {
    const int current = waiting.back();
    const Edge known = value_[size_t(current)];
    const bool onPath = !path.empty() && path.back() == current;
    if (onPath ? known != kInProgress : known != kNoEdge) {
      waiting.pop_back();
      if (onPath) path.pop_back();
      continue;
    }
    if (!onPath) {
      value_[size_t(current)] = kInProgress;
      path.push_back(current);
    }
    const Driver& driver = driver_[size_t(current)];
    inputs.clear();
    inputsOf(driver, inputs);
    bool ready = true;
    for (const int input : inputs) {
      if (isConstantBit(input)) continue;
      // In a loop that could not be cut, for which the module is refused.
      if (value_[size_t(input)] == kInProgress) value_[size_t(input)] = kUnknown;
      if (value_[size_t(input)] != kNoEdge) continue;
      waiting.push_back(input);
      ready = false;
    }
    if (!ready || value_[size_t(current)] != kInProgress) continue;
    if (driver.kind == Driver::CellOutput && !cells_[size_t(driver.cell)].isBitwise) {
      const Edges results = evaluateCell(driver.cell);
      const QVector<int> outputs = outputsOf(cells_[size_t(driver.cell)]);
      for (int i = 0; i < outputs.size(); ++i) {
        if (isConstantBit(outputs[i])) continue;
        const Driver& other = driver_[size_t(outputs[i])];
        Edge& value = value_[size_t(outputs[i])];
        const bool mine = other.kind == Driver::CellOutput && other.cell == driver.cell && other.position == i;
        if (mine && (value == kNoEdge || outputs[i] == current))
          value = size_t(i) < results.size() ? results[size_t(i)] : kUnknown;
      }
    }
    if (value_[size_t(current)] == kInProgress) value_[size_t(current)] = computed(driver);
  }
}

/// Of a driver whose inputs have their values.
Edge ModuleLogic::computed(const Driver& driver) {
  if (driver.kind == Driver::None) return kFloating;
  if (driver.kind == Driver::Leaf) return Edge(driver.position);
  if (driver.kind == Driver::State) return states_[size_t(driver.cell)].leaf;
  if (driver.kind == Driver::CellOutput) {
    if (cells_[size_t(driver.cell)].isBitwise) return evaluateBit(driver);
    const Edges results = evaluateCell(driver.cell);
    return size_t(driver.position) < results.size() ? results[size_t(driver.position)] : kUnknown;
  }
  Edges all;
  for (const Driver& one : several_[size_t(driver.cell)]) all.push_back(computed(one));
  return graph_.resolve(all);
}

QVector<int> ModuleLogic::outputsOf(const Cell& cell) const {
  return bits(cell, isMemoryRead(typeOf(cell)) ? "DATA" : "Y");
}

/// One bit of a bitwise cell, as if the cell were no wider.
Edge ModuleLogic::evaluateBit(const Driver& driver) {
  const Cell& cell = cells_[size_t(driver.cell)];
  WordCell word;
  word.type = typeOf(cell);
  word.port = [&](const char* name) {
    for (int i = cell.firstPort; i < cell.firstPort + cell.ports; ++i)
      if (texts_[ports_[size_t(i)].name] == name)
        return Edges{value(operand(cell, ports_[size_t(i)], driver.position))};
    return Edges{kUnknown};
  };
  word.number = [](const char* name) { return int(qstrcmp(name, "Y_WIDTH") == 0); };
  return words_.evaluate(word).at(0);
}

Edges ModuleLogic::evaluateCell(int index) {
  const Cell& cell = cells_[size_t(index)];
  if (isMemoryRead(typeOf(cell))) return readMemory(cell);
  WordCell word;
  word.type = typeOf(cell);
  word.port = [this, &cell](const char* port) { return values(bits(cell, port)); };
  word.number = [this, &cell](const char* name) { return number(cell, name); };
  word.bits = [this, &cell](const char* name) { return parameter(cell, name); };
  return words_.evaluate(word);
}

}  // namespace ost

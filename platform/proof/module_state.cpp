// What registers, latches and memories of a module do.
#include <algorithm>

#include "platform/proof/module_logic.h"
#include "platform/text/byte_text.h"

namespace ost {
namespace {

// Larger tables are compared by their contents; smaller ones are functions, whether they came from a memory or a case.
constexpr int kMostTableBits = 1 << 16;

int positionIn(const QByteArray& bits, int bit) {
  return bits.size() - 1 - bit;
}

bool bitIsSet(const QByteArray& bits, int bit) {
  return bit < bits.size() && bits[positionIn(bits, bit)] == '1';
}

}  // namespace

Edge ModuleLogic::pin(const Cell& cell, const char* port, int position, Edge missing) {
  const QVector<int> found = bits(cell, port);
  if (found.isEmpty()) return missing;
  return graph_.digital(value(found.value(found.size() == 1 ? 0 : position, kBitX)));
}

/// The pin as it counts: 1 when active.
Edge ModuleLogic::active(const Cell& cell, const char* port, const char* polarity, int position, Edge missing) {
  const Edge value = pin(cell, port, position, missing);
  return bits(cell, port).isEmpty() || bitIsSet(parameter(cell, polarity), 0) ? value : graph_.invert(value);
}

/// A cell of Yosys' words. What holds the value when it is not enabled chooses its own value.
StateFunction ModuleLogic::wordFunction(const Cell& cell, int position, Edge q) {
  const QByteArray& type = typeOf(cell);
  StateFunction result;
  result.clock = active(cell, "CLK", "CLK_POLARITY", 0, kFalse);
  const Edge enable = active(cell, "EN", "EN_POLARITY", 0, kTrue);
  const Edge data = pin(cell, "D", position, q);
  const Edge syncReset = active(cell, "SRST", "SRST_POLARITY", 0, kFalse);
  const auto valueOf = [&](const char* name) {
    const QByteArray bits = parameter(cell, name);
    const char digit = position < bits.size() ? bits[positionIn(bits, position)] : 'x';
    return digit == '1' ? kTrue : digit == '0' ? kFalse : kUnknown;
  };
  if (type == "$sdffce")
    result.next = graph_.mux(enable, graph_.mux(syncReset, valueOf("SRST_VALUE"), data), q);
  else
    result.next = graph_.mux(syncReset, valueOf("SRST_VALUE"), graph_.mux(enable, data, q));
  result.set = active(cell, "SET", "SET_POLARITY", position, kFalse);
  result.clear = active(cell, "CLR", "CLR_POLARITY", position, kFalse);
  Edge load = active(cell, "ARST", "ARST_POLARITY", 0, kFalse), loaded = valueOf("ARST_VALUE");
  if (type.startsWith("$aldff")) {
    load = active(cell, "ALOAD", "ALOAD_POLARITY", 0, kFalse);
    loaded = pin(cell, "AD", position, kUnknown);
  }
  if (load == kFalse) return result;
  if (loaded == kTrue) {
    result.set = load;
  } else if (loaded == kFalse) {
    result.clear = load;
  } else {
    result.load = load;
    result.loaded = loaded;
  }
  return result;
}

/// A cell of single gates, "$_DFFE_PN0P_" and the like; false when it is none that is known.
bool ModuleLogic::gateFunction(const Cell& cell, Edge q, StateFunction& result) {
  const QByteArray& type = typeOf(cell);
  const int bar = type.indexOf('_', 2);
  const QByteArray kind = type.mid(2, bar - 2), code = type.mid(bar + 1, type.size() - bar - 2);
  const auto in = [&](const char* port, int at) {
    const Edge value = pin(cell, port, 0, kUnknown);
    return at < code.size() && code[at] == 'N' ? graph_.invert(value) : value;
  };
  const Edge data = pin(cell, "D", 0, q);
  const bool enabled = kind.endsWith('E') && kind != "DLATCH", latch = kind == "DLATCH";
  const int resetSize = code.size() - 1 - enabled;
  if (!latch) result.clock = in("C", 0);
  const Edge enable = latch ? in("E", 0) : enabled ? in("E", code.size() - 1) : kTrue;
  result.next = graph_.mux(enable, data, q);
  if (resetSize == 0 && (kind == "DFF" || kind == "DFFE" || latch)) return true;
  if (resetSize != 2) return false;
  if (kind == "DFFSR" || kind == "DFFSRE") {
    result.set = in("S", 1);
    result.clear = in("R", 2);
    return true;
  }
  const Edge reset = in("R", 1), value = code[2] == '1' ? kTrue : kFalse;
  if (kind == "SDFF" || kind == "SDFFE") {
    result.next = graph_.mux(reset, value, result.next);
  } else if (kind == "SDFFCE") {
    result.next = graph_.mux(enable, graph_.mux(reset, value, data), q);
  } else if (kind == "DFF" || kind == "DFFE" || latch) {
    (value == kTrue ? result.set : result.clear) = reset;
  } else {
    return false;
  }
  return true;
}

StateFunction ModuleLogic::function(const StateBit& state) {
  StateFunction result;
  if (state.cell < 0) {
    // Its drivers' inputs were not asked for when it was cut.
    QVector<int> inputs;
    inputsOf(driver_[size_t(state.bit)], inputs);
    for (const int input : inputs) value(input);
    result.next = computed(driver_[size_t(state.bit)]);
    return result;
  }
  const Cell cell = cells_[size_t(state.cell)];
  const QByteArray type = typeOf(cell);
  if (type.startsWith("$mem")) {
    result.clock = active(cell, "CLK", "CLK_POLARITY", 0, kFalse);
    const Edges data = readMemory(cell);
    result.next = graph_.mux(pin(cell, "EN", 0, kTrue), data[size_t(state.position)], state.leaf);
    for (const char* special : {"TRANSPARENCY_MASK", "COLLISION_X_MASK", "TRANSPARENT"})
      if (parameter(cell, special).contains('1'))
        refuse(QStringLiteral("it has a memory with a clocked and transparent read port"));
    if (pin(cell, "ARST", 0, kFalse) != kFalse || pin(cell, "SRST", 0, kFalse) != kFalse ||
        parameter(cell, "INIT_VALUE").contains('1') || parameter(cell, "INIT_VALUE").contains('0'))
      refuse(QStringLiteral("it has a memory with a reset read port"));
    return result;
  }
  if (!type.startsWith("$_"))
    result = wordFunction(cell, state.position, state.leaf);
  else if (!gateFunction(cell, state.leaf, result))
    refuse(QStringLiteral("it has a cell of the type \"%1\", which the proof does not know").arg(textFromBytes(type)));
  if (result.clock != kFalse || bits(cell, "CLK").size() + bits(cell, "C").size() > 0) return result;
  // Without a clock all is one function, with the reset before the set.
  result.next = graph_.mux(result.load, result.loaded, result.next);
  result.next = graph_.mux(result.clear, kFalse, graph_.mux(result.set, kTrue, result.next));
  result.set = result.clear = result.load = result.loaded = kFalse;
  return result;
}

void ModuleLogic::readMemories() {
  if (!module_.memories) return;
  JsonCursor cursor(netlist_.text.text(), module_.memories);
  std::string_view key, field;
  cursor.enterObject();
  while (cursor.nextMember(key)) {
    ModuleMemory memory;
    qint64 width = 0, offset = 0, size = 0;
    cursor.enterObject();
    while (cursor.nextMember(field)) {
      if (field == "width")
        cursor.readInteger(width);
      else if (field == "start_offset")
        cursor.readInteger(offset);
      else if (field == "size")
        cursor.readInteger(size);
      else
        cursor.skipValue();
    }
    memory.name = plainMemory(unescapeJson(key));
    memory.width = int(width);
    memory.offset = int(offset);
    memory.words = int(size);
    memories_[memory.name] = memory;
  }
}

QByteArray ModuleLogic::plainMemory(QByteArray name) {
  while (name.startsWith('\\')) name.remove(0, 1);
  return name;
}

/// Brings its cells into order and reads what it holds at the start.
void ModuleLogic::fillMemory(ModuleMemory& memory) {
  const auto sortBy = [this](std::vector<int>& cells, const char* name) {
    std::stable_sort(cells.begin(), cells.end(),
                     [&](int a, int b) { return number(cells_[size_t(a)], name) < number(cells_[size_t(b)], name); });
  };
  sortBy(memory.writes, "PORTID");
  sortBy(memory.initials, "PRIORITY");
  for (const int index : memory.initials) {
    const Cell& cell = cells_[size_t(index)];
    const QVector<int> address = bits(cell, "ADDR"), data = bits(cell, "DATA"), enable = bits(cell, "EN");
    qint64 word = 0;
    for (int i = 0; i < address.size() && i < 31; ++i) word |= address[i] == kBit1 ? qint64(1) << i : 0;
    for (int at = 0; at + memory.width <= data.size() && memory.width; at += memory.width, ++word) {
      const qint64 row = word - memory.offset;
      if (row < 0 || row >= memory.words) continue;
      memory.contents.resize(size_t(memory.words));
      QByteArray& text = memory.contents[size_t(row)];
      if (text.isEmpty()) text.fill('x', memory.width);
      for (int i = 0; i < memory.width; ++i) {
        const int bit = data[at + i];
        if (enable.value(i, kBit1) == kBit1) text[positionIn(text, i)] = bit == kBit1 ? '1' : bit == kBit0 ? '0' : 'x';
      }
    }
  }
}

/// The data of a table is a function of the address; that of a memory is known by its name and the address. At an
/// address that it does not have, or with an unknown bit, all is unknown.
Edges ModuleLogic::readMemory(const Cell& cell) {
  const ModuleMemory& memory = memories_[plainMemory(parameter(cell, "MEMID"))];
  Edges address = values(bits(cell, "ADDR"));
  Edge unknown = words_.takeKnown(address);
  const qint64 end = qint64(memory.offset) + memory.words;
  unknown = graph_.orOf({unknown, words_.isBelow(address, memory.offset), graph_.invert(words_.isBelow(address, end))});
  while (!address.empty() && address.back() == kFalse) address.pop_back();
  const bool table = memory.isTable;
  Edges result;
  if (table && memory.offset == 0 && qint64(memory.words) * memory.width <= kMostTableBits) {
    std::vector<Edges> words;
    for (int word = 0; word < memory.words; ++word) {
      Edges row(size_t(memory.width), kUnknown);
      const QByteArray text = size_t(word) < memory.contents.size() ? memory.contents[size_t(word)] : QByteArray();
      for (int i = 0; i < text.size(); ++i) {
        const char digit = text[positionIn(text, i)];
        row[size_t(i)] = digit == '1' ? kTrue : digit == '0' ? kFalse : kUnknown;
      }
      words.push_back(std::move(row));
    }
    result = words_.lookUp(words, memory.width, address);
  } else {
    QByteArray name = "memory " + memory.name;
    if (table) {
      name = "table " + QByteArray::number(memory.words) + ' ' + QByteArray::number(memory.offset);
      for (const QByteArray& word : memory.contents) name += ' ' + word;
    }
    const int symbol = words_.symbol(name);
    for (int i = 0; i < memory.width; ++i) result.push_back(graph_.function(symbol, address, i, table));
  }
  for (Edge& bit : result) bit = graph_.mux(unknown, kUnknown, bit);
  return result;
}

std::vector<MemoryWrite> ModuleLogic::writes(const ModuleMemory& memory, int bit) {
  std::vector<MemoryWrite> result;
  for (size_t i = 0; i < memory.writes.size(); ++i) {
    const Cell cell = cells_[size_t(memory.writes[i])];
    MemoryWrite write;
    write.enable = pin(cell, "EN", bit, kUnknown);
    if (write.enable == kFalse) continue;
    write.clock = bitIsSet(parameter(cell, "CLK_ENABLE"), 0) ? active(cell, "CLK", "CLK_POLARITY", 0, kFalse) : kFalse;
    write.data = pin(cell, "DATA", bit, kUnknown);
    write.address = values(bits(cell, "ADDR"));
    for (Edge& part : write.address) part = graph_.digital(part);
    while (!write.address.empty() && write.address.back() == kFalse) write.address.pop_back();
    write.port = int(i);
    result.push_back(std::move(write));
  }
  return result;
}

bool ModuleLogic::hasPriority(const ModuleMemory& memory, int later, int earlier) const {
  const Cell& cell = cells_[size_t(memory.writes[size_t(later)])];
  const int id = number(cells_[size_t(memory.writes[size_t(earlier)])], "PORTID");
  // Without a mask ($memwr), the later one wins on the same clock.
  if (typeOf(cell) == "$memwr") return true;
  return bitIsSet(parameter(cell, "PRIORITY_MASK"), id);
}

}  // namespace ost

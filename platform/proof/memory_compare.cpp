// Compares the memories of both sides: sizes, contents, and each write port bit by bit.
#include <algorithm>

#include "platform/proof/comparison.h"

namespace ost {
namespace {

/// For each write of one side its place on the other: those that have most in common, in the order they have.
std::vector<size_t> pairWrites(const std::vector<MemoryWrite>& from, const std::vector<MemoryWrite>& to) {
  const auto likeness = [](const MemoryWrite& a, const MemoryWrite& b) {
    return (a.clock == b.clock) + 2 * (a.data == b.data) + 4 * (a.enable == b.enable) + 8 * (a.address == b.address);
  };
  std::vector<size_t> partner(from.size(), from.size());
  std::vector<bool> taken(to.size());
  for (int wanted = 15; wanted >= 0; --wanted)
    for (size_t i = 0; i < from.size(); ++i)
      for (size_t k = 0; k < to.size() && partner[i] == from.size(); ++k) {
        // Where both have a write at the same place, that one first.
        const size_t at = (i + k) % to.size();
        if (taken[at] || likeness(from[i], to[at]) < wanted) continue;
        taken[at] = true;
        partner[i] = at;
      }
  return partner;
}

}  // namespace

/// The writes to one bit of all words. Their order matters where one wins over the other.
bool Comparison::compareWrites(const ModuleMemory& original, const ModuleMemory& written, int bit) {
  const QString name = QStringLiteral("the memory %1 (bit %2)").arg(quotedName(original.name)).arg(bit);
  std::vector<MemoryWrite> from = original_.writes(original, bit), to = written_.writes(written, bit);
  // A place that one side does not have writes nothing there.
  MemoryWrite nothing;
  nothing.clock = nothing.enable = kFalse;
  nothing.data = kUnknown;
  from.resize(std::max(from.size(), to.size()), nothing);
  to.resize(from.size(), nothing);
  const std::vector<size_t> partner = pairWrites(from, to);
  for (size_t i = 0; i < from.size(); ++i) {
    const MemoryWrite &one = from[i], &other = to[partner[i]];
    for (size_t k = i + 1; k < from.size(); ++k) {
      if (one.enable == kFalse || other.enable == kFalse || from[k].enable == kFalse || to[partner[k]].enable == kFalse)
        continue;
      if (!original_.hasPriority(original, from[k].port, one.port)) continue;
      const int late = to[partner[k]].port, early = other.port;
      if (late < early || !written_.hasPriority(written, late, early))
        return undecided(QStringLiteral("%1 is written in another order").arg(name));
    }
    // What is never written may be anything, where the original leaves open whether it is written.
    compare(QStringLiteral("the enable of a write to %1").arg(name), one.enable, other.enable);
    compare(QStringLiteral("the clock of a write to %1").arg(name), one.clock, other.clock, other.enable);
    compare(QStringLiteral("the data of a write to %1").arg(name), one.data, other.data, other.enable);
    for (size_t k = 0; k < std::max(one.address.size(), other.address.size()); ++k)
      compare(QStringLiteral("the address of a write to %1").arg(name),
              k < one.address.size() ? one.address[k] : kFalse, k < other.address.size() ? other.address[k] : kFalse,
              other.enable);
  }
  return true;
}

bool Comparison::compareMemory(const ModuleMemory& original, const ModuleMemory& written) {
  const QString name = quotedName(original.name);
  if (original.words != written.words || original.width != written.width || original.offset != written.offset)
    return differs(QStringLiteral("the memory %1 has another size").arg(name));
  for (size_t word = 0; word < original.contents.size(); ++word)
    for (int i = 0; i < original.contents[word].size(); ++i) {
      const char wanted = original.contents[word][i];
      const char found =
          word < written.contents.size() ? written.contents[word].isEmpty() ? 'x' : written.contents[word][i] : 'x';
      if (wanted != 'x' && wanted != found)
        return differs(QStringLiteral("the memory %1 begins with other contents").arg(name));
    }
  for (int bit = 0; bit < original.width; ++bit)
    if (!compareWrites(original, written, bit)) return false;
  return true;
}

/// What is never written is a function of its address; a write that is never enabled may have been dropped.
void Comparison::findTables() {
  for (auto& [name, memory] : original_.memories()) {
    const auto found = written_.memories().find(name);
    memory.isTable = memory.writes.empty() && (found == written_.memories().end() || found->second.writes.empty());
  }
  for (auto& [name, memory] : written_.memories()) {
    const auto found = original_.memories().find(name);
    memory.isTable = found == original_.memories().end() ? memory.writes.empty() : found->second.isTable;
  }
}

/// Tables were compared with what they are read for.
bool Comparison::compareMemories() {
  for (const auto& [name, memory] : original_.memories()) {
    const auto found = written_.memories().find(name);
    const bool read = found != written_.memories().end() && !found->second.writes.empty();
    if (read && memory.writes.empty())
      return differs(QStringLiteral("the memory %1 is written, which in the original it is not").arg(quotedName(name)));
    if (!memory.writes.empty() && found != written_.memories().end() && !compareMemory(memory, found->second))
      return false;
  }
  return true;
}

}  // namespace ost

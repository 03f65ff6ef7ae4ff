// Random projects that trigger: every choice comes from the seed, the values from what the device really did.
#pragma once

#include <random>

#include "tests/sim/oracle/model.h"

namespace oracle {

class Generator {
 public:
  explicit Generator(quint32 seed) : random_(seed * 7919u + 17u) {}

  /// The device, its clocks and TCK's rate; no core yet.
  Project device();
  /// Adds one to three cores whose expressions fire on the records (one for each clock of the device).
  void addCores(Project& project, const QVector<Record>& records);
  /// What a run of the core changes; the first run takes the values as inserted.
  RunChoice choice(const Core& core, const Record& record, bool asInserted);

  int below(int n) { return static_cast<int>(random_() % static_cast<quint32>(n)); }
  bool chance(int percent) { return below(100) < percent; }

 private:
  void makeProbes(Core& core, const Dut& dut);
  Core makeCore(const Project& project, const QVector<Record>& records, int index);
  Unit makeUnit(const Dut& dut, const Record& record, int index);
  void giveValue(Unit& unit, const Record& record);
  Term makeTerm(int units, int depth);
  /// Bits of a random selection of one net, with the word that names it.
  QStringList select(const Dut& dut, QString& word, int mostBits);
  template <typename List>
  auto pick(const List& list) {
    return list[below(list.size())];
  }

  std::mt19937 random_;
};

/// Fewest samples that a run on the record must need, and the most: what is worth comparing and does not take ages.
bool isWorthRunning(const Core& core, const RunChoice& choice, const Record& record);

}  // namespace oracle

// The comparison of one module: its parts share the two sides' logic and collect what is to be equal.
#pragma once

#include <QElapsedTimer>

#include "platform/proof/module_compare.h"

namespace ost {

/// A name in double quotes.
QString quotedName(const QByteArray& name);

class Comparison {
 public:
  Comparison(const NetlistBits& original, int originalModule, const NetlistBits& written, int writtenModule,
             const ExpectedChanges& changes, const SolverLimits& limits)
      : limits_(limits),
        graph_([this] { serve(); }),
        words_(graph_, rails_),
        original_(graph_, words_, leaves_, original, originalModule),
        written_(graph_, words_, leaves_, written, writtenModule, {changes.debugType, changes.lowPin}),
        originals_(original),
        changes_(changes) {}

  /// Thrown out of the work when nobody waits for its end any more.
  struct Interrupted {
    QString reason;
  };

  ModuleVerdict run();

 private:
  bool differs(const QString& text) {
    verdict_ = {ProofOutcome::Different, text};
    return false;
  }
  bool undecided(const QString& text) {
    verdict_ = {ProofOutcome::Undecided, text};
    return false;
  }
  bool pairStates();
  bool comparePorts();
  bool compareInstances();
  bool comparePins(const NetlistInstance& instance, const QByteArray& writtenType, const CellConnections& original,
                   const CellConnections& written);
  bool compareNets();
  bool compareStates();
  bool compareCuts();
  void findTables();
  bool compareMemories();
  bool compareMemory(const ModuleMemory& original, const ModuleMemory& written);
  bool compareWrites(const ModuleMemory& original, const ModuleMemory& written, int bit);
  bool decide();
  void compare(const QString& place, Edge original, Edge written, Edge care = kTrue) {
    if (original != written && care != kFalse) points_.push_back({place, original, written, care});
  }
  static QElapsedTimer startedTimer() {
    QElapsedTimer timer;
    timer.start();
    return timer;
  }
  void serve() const {
    if (limits_.idle && !limits_.idle()) throw Interrupted{QStringLiteral("cancelled")};
    if (clock_.hasExpired(qint64(limits_.seconds) * 1000)) throw Interrupted{QStringLiteral("its time is over")};
  }
  QString shown(const Counterexample& example) const;

  const SolverLimits& limits_;
  const QElapsedTimer clock_ = startedTimer();
  LogicGraph graph_;
  RailSplitter rails_{graph_};
  WordLogic words_;
  LeafTable leaves_;
  ModuleLogic original_, written_;
  const NetlistBits& originals_;
  const ExpectedChanges& changes_;
  std::vector<NamedBit> cuts_;
  std::vector<ComparePoint> points_;
  /// States that are taken for the same, of both sides: [class][side].
  struct Class {
    QByteArray name;
    std::vector<int> states[2];
  };
  std::vector<Class> classes_;
  QSet<int> nameless_;  ///< Leaves of states that have no partner because they have no name of the source's.
  ModuleVerdict verdict_;
};

}  // namespace ost

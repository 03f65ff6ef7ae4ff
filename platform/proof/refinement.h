// Whether a function of the written design takes only values that the original's allows: where the original is unknown
// any value will do. Found by simulation, by trying all values, or by the solver of Yosys.
#pragma once

#include <QHash>
#include <QPair>
#include <QString>
#include <QVector>
#include <functional>
#include <unordered_map>

#include "platform/proof/rails.h"

namespace ost {

enum class ProofOutcome { Proved, Different, Undecided };

/// One pair of functions to be compared.
struct ComparePoint {
  QString place;  ///< In words: "the register \"state[2]\"".
  Edge original, written;
  Edge care = kTrue;  ///< Where it is 0, nothing matters.
};

/// Values that make a difference.
struct Counterexample {
  QVector<QPair<int, bool>> leaves;  ///< Numbers of leaves and their values.
  char original = 'x', written = 'x';
};

struct SolverLimits {
  int seconds = 60;
  qint64 memoryBytes = 0;
  std::function<bool()> idle;  ///< False cancels.
};

class Refinement {
 public:
  /// `isFree`: symbols of functions of which the simulation cannot tell what they give.
  Refinement(LogicGraph& graph, RailSplitter& rails, std::function<bool(int symbol)> isFree)
      : graph_(graph), rails_(rails), isFree_(std::move(isFree)) {}

  /// Looks at all points until one is different. `point` is the one that decided; `reason` says why it is undecided.
  ProofOutcome check(const std::vector<ComparePoint>& points, const SolverLimits& limits, int& point,
                     Counterexample& example, QString& reason);

 private:
  Edge difference(const ComparePoint& point);
  char valueOf(Edge edge, const std::unordered_map<uint32_t, uint64_t>& values, int lane);
  void simulate(const std::vector<uint32_t>& nodes, const std::function<uint64_t(uint32_t)>& source,
                std::unordered_map<uint32_t, uint64_t>& values) const;
  uint64_t functionValue(const LogicGraph::Node& node, const std::unordered_map<uint32_t, uint64_t>& values) const;
  bool simulateForDifference(const ComparePoint& point, Edge different, Counterexample& example, bool& sure);
  bool holdsForAll(Edge different);
  bool isVariable(uint32_t node) const;
  Edge isFunction(const Edges& roots);
  ProofOutcome solve(const std::vector<ComparePoint>& points, const std::vector<std::pair<int, Edge>>& left,
                     const SolverLimits& limits, int& point, Counterexample& example, QString& reason);
  bool explain(const ComparePoint& point, Edge different, const std::function<uint64_t(uint32_t)>& source,
               Counterexample& example, bool& sure);

  LogicGraph& graph_;
  RailSplitter& rails_;
  std::function<bool(int)> isFree_;
  std::function<uint64_t()> freeValues_;  ///< While set, what free functions give.
  /// While set, what some functions give.
  const std::unordered_map<uint32_t, uint64_t>* givenValues_ = nullptr;
};

}  // namespace ost

// Finds the loops of a module's logic, and cuts each at a net that has a name of the source's.
#include <algorithm>

#include "platform/proof/module_logic.h"

namespace ost {
namespace {

using Nodes = std::vector<int>;

/// The strongly connected components of a graph after Tarjan, without recursion.
class Components {
 public:
  Components(size_t nodes, std::function<void(int, Nodes&)> successors)
      : group_(nodes), index_(nodes), lowest_(nodes), successors_(std::move(successors)) {}

  /// Of the nodes, which are a whole component found before, those that are a loop.
  std::vector<Nodes> loopsAmong(const Nodes& nodes);

 private:
  struct Visit {
    int node;
    Nodes next;
    size_t done;
  };
  void begin(int node) {
    index_[size_t(node)] = lowest_[size_t(node)] = ++counter_;
    stack_.push_back(node);
    visits_.push_back({node, {}, 0});
    successors_(node, visits_.back().next);
  }
  void end(std::vector<Nodes>& loops);

  std::vector<int> group_;
  std::vector<int> index_, lowest_;  ///< 0: not seen yet; kDone: its component is known.
  std::function<void(int, Nodes&)> successors_;
  Nodes stack_;
  std::vector<Visit> visits_;
  int counter_ = 0, groups_ = 0;
  static constexpr int kDone = -1;
};

/// Leaves a node; when it is the first of its component, the component is complete.
void Components::end(std::vector<Nodes>& loops) {
  const Visit visit = std::move(visits_.back());
  visits_.pop_back();
  const size_t node = size_t(visit.node);
  if (!visits_.empty()) {
    int& above = lowest_[size_t(visits_.back().node)];
    above = std::min(above, lowest_[node]);
  }
  if (lowest_[node] != index_[node]) return;
  Nodes component;
  do {
    component.push_back(stack_.back());
    stack_.pop_back();
    index_[size_t(component.back())] = kDone;
  } while (component.back() != visit.node);
  const bool isLoop =
      component.size() > 1 || std::find(visit.next.begin(), visit.next.end(), visit.node) != visit.next.end();
  if (isLoop) loops.push_back(std::move(component));
}

std::vector<Nodes> Components::loopsAmong(const Nodes& nodes) {
  std::vector<Nodes> loops;
  ++groups_;
  for (const int node : nodes) {
    group_[size_t(node)] = groups_;
    index_[size_t(node)] = 0;
  }
  for (const int root : nodes) {
    if (index_[size_t(root)]) continue;
    begin(root);
    while (!visits_.empty()) {
      Visit& visit = visits_.back();
      if (visit.done == visit.next.size()) {
        end(loops);
        continue;
      }
      const size_t next = size_t(visit.next[visit.done++]);
      if (group_[next] != groups_ || index_[next] == kDone) continue;
      if (index_[next])
        lowest_[size_t(visit.node)] = std::min(lowest_[size_t(visit.node)], index_[next]);
      else
        begin(int(next));
    }
  }
  return loops;
}

}  // namespace

/// Of a bit (below value_.size()) and of a cell (from there on): what it is made of. A cut bit is made of nothing.
void ModuleLogic::loopSuccessors(int node, std::vector<int>& next) const {
  const int bits = int(value_.size());
  QVector<int> inputs;
  const auto follow = [&](const Driver& driver) {
    if (driver.kind == Driver::CellOutput && !cells_[size_t(driver.cell)].isBitwise)
      next.push_back(bits + driver.cell);
    else
      inputsOf(driver, inputs);
  };
  if (node >= bits) {
    inputsOf({Driver::CellOutput, node - bits, 0}, inputs);
  } else if (!stateAt_.count(node)) {
    const Driver& driver = driver_[size_t(node)];
    if (driver.kind != Driver::Several) follow(driver);
    for (size_t i = 0; driver.kind == Driver::Several && i < several_[size_t(driver.cell)].size(); ++i)
      follow(several_[size_t(driver.cell)][i]);
  }
  for (const int input : inputs)
    if (!isConstantBit(input)) next.push_back(input);
  graph_.work(next.size() + 1);
}

std::vector<NamedBit> ModuleLogic::openLoops(const ModuleLogic& other) {
  std::vector<NamedBit> cuts;
  Components components(value_.size() + cells_.size(), [this](int node, Nodes& next) { loopSuccessors(node, next); });
  Nodes all(value_.size());
  for (size_t i = 0; i < all.size(); ++i) all[i] = int(i);
  for (size_t i = 0; i < cells_.size(); ++i)
    if (!cells_[i].isBitwise) all.push_back(int(value_.size() + i));
  std::vector<Nodes> loops = components.loopsAmong(all);
  std::unordered_map<int, NamedBit> nameOf;
  for (const ModuleNet& net : nets_) {
    const ModuleNet* partner = loops.empty() ? nullptr : other.net(net.name);
    for (int i = 0; partner && i < std::min(net.bits.size(), partner->bits.size()); ++i)
      if (!isConstantBit(net.bits[i])) nameOf.emplace(net.bits[i], NamedBit{net.name, i});
  }
  // One cut may leave several smaller loops of a large one.
  while (!loops.empty()) {
    const Nodes loop = std::move(loops.back());
    loops.pop_back();
    std::unordered_map<int, int> readers;
    Nodes next;
    for (const int node : loop) {
      next.clear();
      loopSuccessors(node, next);
      for (const int input : next) ++readers[input];
    }
    int best = -1;
    for (const int node : loop)
      if (nameOf.count(node) && (best < 0 || readers[node] > readers[best])) best = node;
    if (best < 0) {
      refuse(QStringLiteral("it has a loop of logic in which no net has a name of the source's"));
      continue;
    }
    cuts.push_back(nameOf.at(best));
    cut(cuts.back());
    for (Nodes& smaller : components.loopsAmong(loop)) loops.push_back(std::move(smaller));
  }
  return cuts;
}

}  // namespace ost

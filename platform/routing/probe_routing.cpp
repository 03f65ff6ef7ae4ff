// Builds the routing: a tree of the instances that hold taps, then, from its leaves up, one variant for all instances
// of a module that are probed alike.
#include "platform/routing/probe_routing.h"

#include <algorithm>

#include "platform/design/name_index.h"
#include "platform/text/byte_text.h"

namespace ost {
namespace {

QVector<NetBit> serdesNets(const PlanSerdes& serdes, DebugPort::Role role) {
  if (role == DebugPort::SerdesClock) return {serdes.clock};
  if (role == DebugPort::SerdesReset) return {serdes.reset};
  QVector<NetBit> nets;
  for (const PlanWatched& one : role == DebugPort::SerdesWatchedClocks ? serdes.clocks : serdes.levels)
    nets.append(one.net);
  return nets;
}

QVector<NetBit> netsOf(const InsertPlan& plan, const DebugPort& port) {
  if (port.role == DebugPort::WishboneClock)
    return plan.wishbone->isConnected ? QVector<NetBit>{plan.wishbone->clock} : QVector<NetBit>();
  if (port.role >= DebugPort::SerdesClock) return serdesNets(*plan.serdes, port.role);
  if (port.core < 0) return {};
  const PlanCore& core = plan.cores[port.core];
  switch (port.role) {
    case DebugPort::SampleClock:
      return {core.sampleClock};
    case DebugPort::Probe:
      return core.probeBits;
    case DebugPort::Trigger:
      return core.triggerBits;
    case DebugPort::SampleEnable:
      return {core.sampleEnable};
    case DebugPort::TriggerEnable:
      return {core.triggerEnable};
    default:
      return {};
  }
}

/// Whether the bit is an input of the slave that the Wishbone master shares: the net outside is another one then.
bool isSharedPin(const NetlistBits& netlist, const InsertPlan& plan, const PlacedBit& place) {
  if (!plan.wishbone || !plan.wishbone->isConnected || place.path.size() != 1) return false;
  const NetlistModule& top = netlist.text.module(netlist.text.top());
  if (top.instances[size_t(place.path[0])].name != plan.wishbone->instance.toLatin1()) return false;
  for (const NetlistPort& port : netlist.text.module(place.module).portList)
    for (const WishbonePin& pin : plan.wishbone->pins)
      if (port.direction == NetlistPort::Input && port.name == pin.port.toLatin1() && port.bits.contains(place.bit))
        return true;
  return false;
}

}  // namespace

QByteArray freeName(const QByteArray& wanted, const std::function<bool(const QByteArray&)>& taken) {
  QByteArray name = wanted;
  for (int number = 1; taken(name); ++number) name = wanted + '_' + QByteArray::number(number);
  return name;
}

int ProbeRouting::nodeAt(const NetlistBits& netlist, const std::vector<int>& path) {
  int node = 0;
  for (const int instance : path) {
    const auto known = nodes_[size_t(node)].children.find(instance);
    if (known != nodes_[size_t(node)].children.end()) {
      node = known->second;
      continue;
    }
    Node below;
    below.module = netlist.text.module(nodes_[size_t(node)].module).instances[size_t(instance)].module;
    nodes_[size_t(node)].children.emplace(instance, int(nodes_.size()));
    node = int(nodes_.size());
    nodes_.push_back(below);
  }
  return node;
}

void ProbeRouting::countInstances(const NetlistBits& netlist) {
  const size_t count = netlist.text.modules().size();
  // Parents before children, so that a parent's count is final when it is passed on.
  std::vector<int> order;
  std::vector<char> seen(count);
  std::vector<std::pair<int, size_t>> open{{netlist.text.top(), 0}};
  seen[size_t(netlist.text.top())] = 1;
  while (!open.empty()) {
    auto& [module, next] = open.back();
    const auto& instances = netlist.text.module(module).instances;
    if (next == instances.size()) {
      order.push_back(module);
      open.pop_back();
      continue;
    }
    const int below = instances[next++].module;
    if (below >= 0 && !seen[size_t(below)]) {
      seen[size_t(below)] = 1;
      open.emplace_back(below, 0);
    }
  }
  instanceCount_.assign(count, 0);
  instanceCount_[size_t(netlist.text.top())] = 1;
  for (auto module = order.rbegin(); module != order.rend(); ++module)
    for (const NetlistInstance& instance : netlist.text.module(*module).instances)
      if (instance.module >= 0) {
        qint64& below = instanceCount_[size_t(instance.module)];
        below = std::min(below + instanceCount_[size_t(*module)], qint64(1) << 60);
      }
}

QByteArray ProbeRouting::freeModuleName(const NetlistBits& netlist, const NetlistModule& module) {
  const QByteArray source = sourceName(module.name) + "__ostrel";
  const QByteArray base = yosysKey(std::string_view(source.constData(), size_t(source.size())));
  const QByteArray name = freeName(base, [&](const QByteArray& candidate) {
    return netlist.text.find(candidate) >= 0 || newNames_.contains(candidate);
  });
  newNames_.insert(name, true);
  return name;
}

void ProbeRouting::makeVariants(const NetlistBits& netlist) {
  std::vector<qint64> probed(netlist.text.modules().size());
  for (const Node& node : nodes_) ++probed[size_t(node.module)];
  std::vector<char> replaced(netlist.text.modules().size());
  QHash<QByteArray, int> known;
  // A node stands after its parent, so going backwards meets every child first.
  for (size_t i = nodes_.size(); i-- > 1;) {
    Node& node = nodes_[i];
    ModuleVariant variant;
    variant.module = node.module;
    variant.tapped = node.tapped;
    variant.width = node.tapped.size();
    QByteArray signature = QByteArray::number(node.module);
    for (const int bit : node.tapped) signature += ' ' + QByteArray::number(bit);
    for (const auto& [instance, below] : node.children) {
      Node& child = nodes_[size_t(below)];
      child.offset = variant.width;
      variant.width += variants_[size_t(child.variant)].width;
      variant.children.push_back({instance, child.variant});
      signature += ' ' + QByteArray::number(instance) + ':' + QByteArray::number(child.variant);
    }
    const auto alike = known.constFind(signature);
    if (alike != known.constEnd()) {
      node.variant = *alike;
      continue;
    }
    const NetlistModule& module = netlist.text.module(node.module);
    const bool allProbed = probed[size_t(node.module)] == instanceCount_[size_t(node.module)];
    variant.inPlace = allProbed && !replaced[size_t(node.module)];
    if (variant.inPlace) replaced[size_t(node.module)] = 1;
    variant.name = variant.inPlace ? module.name : freeModuleName(netlist, module);
    const ModuleIndex& index = netlist.index(node.module);
    variant.port = freeName("ostrel_probe", [&](const QByteArray& name) { return index.nameTaken(name); });
    node.variant = int(variants_.size());
    known.insert(signature, node.variant);
    variants_.push_back(std::move(variant));
  }
  for (const auto& [instance, below] : nodes_[0].children)
    topChildren_.push_back({instance, nodes_[size_t(below)].variant});
}

bool ProbeRouting::build(const NetlistBits& netlist, const InsertPlan& plan, QString& error) {
  nodes_.assign(1, Node());
  nodes_[0].module = netlist.text.top();

  struct Tap {
    size_t connection;
    int index, node, bit;
  };
  std::vector<Tap> taps;
  for (const DebugPort& port : debugModulePorts(plan)) {
    DebugConnection connection{port, netsOf(plan, port), {}};
    connection.sources.resize(connection.nets.size());
    for (int i = 0; i < connection.nets.size(); ++i) {
      PlacedBit place;
      if (!netlist.place(connection.nets[i], place)) {
        error = QStringLiteral("The net \"%1\" is not in the elaborated design; read the design again with ost_design.")
                    .arg(connection.nets[i].name);
        return false;
      }
      place = netlist.topmost(place, [&](const PlacedBit& at) { return isSharedPin(netlist, plan, at); });
      if (isConstantBit(place.bit)) {
        connection.sources[i].bit = place.bit;
        continue;
      }
      const int node = nodeAt(netlist, place.path);
      taps.push_back({connections_.size(), i, node, place.bit});
      Node& holder = nodes_[size_t(node)];
      if (node != 0 && !holder.positionOf.contains(place.bit)) {
        holder.positionOf.insert(place.bit, holder.tapped.size());
        holder.tapped.append(place.bit);
      }
    }
    connections_.push_back(std::move(connection));
  }

  countInstances(netlist);
  makeVariants(netlist);

  // From each node to the top: the child of the top that contains it, and where its port begins in that child's port.
  std::vector<std::pair<int, int>> atTop(nodes_.size(), {-1, 0});
  int child = 0;
  for (const auto& [instance, below] : nodes_[0].children) atTop[size_t(below)] = {child++, 0};
  for (size_t i = 1; i < nodes_.size(); ++i)
    for (const auto& [instance, below] : nodes_[i].children)
      atTop[size_t(below)] = {atTop[i].first, atTop[i].second + nodes_[size_t(below)].offset};
  for (const Tap& tap : taps) {
    TopSource& source = connections_[tap.connection].sources[tap.index];
    const Node& node = nodes_[size_t(tap.node)];
    source.bit = tap.bit;
    if (tap.node == 0) continue;
    source.child = atTop[size_t(tap.node)].first;
    source.position = atTop[size_t(tap.node)].second + node.positionOf.value(tap.bit);
  }
  return true;
}

}  // namespace ost

// Bits are compared by where they are driven, so that it does not matter under which of its names a net was probed.
#include "platform/plan/probed_instances.h"

#include <algorithm>
#include <map>

#include "platform/design/name_index.h"
#include "platform/netlist/instance_outline.h"
#include "platform/plan/generate_blocks.h"
#include "platform/text/byte_text.h"

namespace ost {
namespace {

class InstanceFinder {
 public:
  InstanceFinder(const NetlistBits& netlist, PlanCore& core);
  /// False when it cannot be replayed.
  bool find(const QString& path, ProbedInstance& result);

 private:
  /// Where the bit of a module is captured; a ReplayBit otherwise.
  int captured(const PlacedBit& bit) const;
  bool addPorts(PlacedBit place, ProbedInstance& result) const;
  void addState(const PlacedBit& place, ProbedInstance& result) const;
  /// The scopes from the instance down to `inner`, and the parts of `name` there.
  QStringList scopesOf(const PlacedBit& instance, const PlacedBit& inner, const QByteArray& name) const;

  const NetlistBits& netlist_;
  std::map<BitSource, int> positions_;
  BitSource clock_;
};

InstanceFinder::InstanceFinder(const NetlistBits& netlist, PlanCore& core) : netlist_(netlist) {
  PlacedBit place;
  for (int i = 0; i < core.probeBits.size(); ++i)
    if (netlist.place(core.probeBits[i], place)) positions_.emplace(sourceOf(netlist, place), i);
  if (netlist.place(core.sampleClock, place)) clock_ = sourceOf(netlist, place);
}

int InstanceFinder::captured(const PlacedBit& bit) const {
  const BitSource source = isConstantBit(bit.bit) ? BitSource({}, bit.bit) : sourceOf(netlist_, bit);
  if (source.second == kBit0 || source.second == kBit1) return source.second == kBit1 ? kReplay1 : kReplay0;
  if (isConstantBit(source.second)) return kReplayX;
  if (source == clock_) return kReplayClock;
  const auto known = positions_.find(source);
  return known == positions_.end() ? kReplayX : known->second;
}

bool InstanceFinder::addPorts(PlacedBit place, ProbedInstance& result) const {
  bool hasOutput = false;
  std::set<BitSource> inputs;
  for (const NetlistPort& port : netlist_.text.module(place.module).portList) {
    if (port.direction == NetlistPort::InOut) return false;
    ReplayPort replayed = {textFromBytes(port.name), port.direction == NetlistPort::Output, {}};
    for (auto bit = port.bits.rbegin(); bit != port.bits.rend(); ++bit) {
      place.bit = *bit;
      int found = captured(place);
      if (replayed.isOutput) {
        if (found == kReplayClock) found = kReplayX;
        hasOutput = hasOutput || found >= 0;
      } else if (found != kReplayClock) {
        LocalDriver driver;
        const PlacedBit source = netlist_.source(place, driver);
        const bool isDriven = !isConstantBit(source.bit) && driver.kind != LocalDriver::None;
        if (isDriven && found == kReplayX) return false;
        if (isDriven) inputs.insert({source.path, source.bit});
      }
      replayed.bits.append(found);
    }
    result.ports.append(replayed);
  }
  if (!hasOutput) return false;
  // Looked for last, as it takes all cells below.
  const std::set<BitSource> clocks = clocksOf(netlist_, place);
  return std::none_of(inputs.begin(), inputs.end(), [&](const BitSource& input) { return clocks.count(input) > 0; });
}

QStringList InstanceFinder::scopesOf(const PlacedBit& instance, const PlacedBit& inner, const QByteArray& name) const {
  QStringList scopes;
  int module = instance.module;
  for (size_t i = instance.path.size(); i < inner.path.size(); ++i) {
    const NetlistInstance& below = netlist_.text.module(module).instances[size_t(inner.path[i])];
    scopes += splitAtBlocks(withoutProtection(textFromBytes(below.name)));
    module = below.module;
  }
  return scopes + splitAtBlocks(withoutProtection(textFromBytes(name)));
}

void InstanceFinder::addState(const PlacedBit& place, ProbedInstance& result) const {
  std::set<BitSource> counted;
  forEachRegisterNet(netlist_, place, [&](const RegisterNet& net) {
    ReplayState state;
    PlacedBit bit = net.place;
    bool isKnown = false;
    for (auto id = net.bits.rbegin(); id != net.bits.rend(); ++id) {
      bit.bit = *id;
      state.bits.append(captured(bit));
      if (!isConstantBit(*id) && counted.insert({bit.path, *id}).second) {
        ++result.registerBits;
        result.knownBits += state.bits.last() >= 0;
      }
      isKnown = isKnown || state.bits.last() >= 0;
    }
    if (!isKnown && !net.hasInitialValue) return;
    state.scopes = scopesOf(place, net.place, net.name);
    state.name = state.scopes.takeLast();
    result.state.append(state);
  });
  for (const FilledMemory& memory : filledMemories(netlist_, place)) {
    ReplayState state;
    state.scopes = scopesOf(place, memory.place, memory.name);
    state.name = state.scopes.takeLast();
    state.first = memory.first;
    state.last = memory.last;
    result.state.append(state);
  }
}

bool InstanceFinder::find(const QString& path, ProbedInstance& result) {
  PlacedBit place;
  if (!netlist_.findInstance(path, place) || netlist_.text.module(place.module).blackBox) return false;
  result.path = path;
  result.module = textFromBytes(sourceName(netlist_.text.module(place.module).name));
  if (!addPorts(place, result)) return false;
  for (const ModuleParameter& parameter : parametersOf(netlist_.text, place.module))
    result.parameters.append({textFromBytes(parameter.name), parameter.value.isText, parameter.value.text});
  addState(place, result);
  return true;
}

/// Names that can stand in Verilog, as a capture map demands it.
bool isWritable(const ProbedInstance& instance) {
  QStringList names(instance.module);
  for (const ReplayPort& port : instance.ports) names += port.name;
  for (const ReplayParameter& parameter : instance.parameters) names += parameter.name;
  for (const ReplayState& state : instance.state) names += state.scopes + QStringList(state.name);
  const auto isGraphic = [](QChar c) { return c > QLatin1Char(' ') && c <= QLatin1Char('~'); };
  return std::all_of(names.begin(), names.end(), [&](const QString& name) {
    return !name.isEmpty() && std::all_of(name.begin(), name.end(), isGraphic);
  });
}

}  // namespace

void findProbedInstances(const Netlist& netlist, InsertPlan& plan) {
  for (PlanCore& core : plan.cores) {
    QStringList paths;
    for (const NetBit& bit : qAsConst(core.probeBits))
      if (!bit.instancePath.isEmpty()) paths += bit.instancePath;
    paths.removeDuplicates();
    core.instances.clear();
    InstanceFinder finder(netlist.bits(), core);
    for (const QString& path : qAsConst(paths)) {
      ProbedInstance instance;
      if (finder.find(path, instance) && isWritable(instance)) core.instances.append(instance);
    }
  }
}

}  // namespace ost

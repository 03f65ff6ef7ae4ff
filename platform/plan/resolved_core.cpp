// Looks up the names of a core.
#include "platform/plan/resolved_core.h"

#include "platform/istdata/trace_tree.h"
#include "platform/plan/insert_plan.h"
#include "platform/trigger/unit_value.h"

namespace ost {

namespace {

class CoreResolver {
 public:
  CoreResolver(const Design& design, const std::function<bool()>& beat) : design_(design), beat_(beat) {}

  ResolvedCore resolve(const Core& core);

 private:
  bool goesOn() { return goesOn_ = goesOn_ && (!beat_ || beat_()); }
  /// The bits that the name stands for, which share the words that `neighbour` has, too; empty when the design has no
  /// such net. Which names are near is left to who shows the fault.
  QVector<NetBit> bitsOf(const QString& name, NetSelection& found, const NetBit* neighbour = nullptr) const;
  ResolvedName resolve(const QString& name) const;
  void resolveTraced(const QList<TraceNode*>& nodes, std::vector<ResolvedSignal>& traced);
  ResolvedUnit resolve(const TriggerUnit& unit);

  const Design& design_;
  const std::function<bool()>& beat_;
  bool goesOn_ = true;
};

QVector<NetBit> CoreResolver::bitsOf(const QString& name, NetSelection& found, const NetBit* neighbour) const {
  QString ignored;
  QVector<NetBit> bits;
  if (!design_.exists(name) || !design_.resolve(name, found, ignored)) return bits;
  if (neighbour && neighbour->instancePath == found.instancePath) found.instancePath = neighbour->instancePath;
  if (neighbour && neighbour->net == found.net) found.net = neighbour->net;
  for (int i = 0; i < found.bits.size(); ++i)
    bits.append({found.instancePath, found.net, found.bits.at(i), found.bitNames.at(i)});
  return bits;
}

ResolvedName CoreResolver::resolve(const QString& name) const {
  NetSelection found;
  return {name, name.isEmpty() ? QVector<NetBit>() : bitsOf(name, found)};
}

/// References stand for bits that are captured already.
void CoreResolver::resolveTraced(const QList<TraceNode*>& nodes, std::vector<ResolvedSignal>& traced) {
  for (const TraceNode* node : nodes) {
    if (!goesOn()) return;
    if (node->kind == mero::ostrel::TRACE_NODE_BUS) resolveTraced(node->children, traced);
    if (node->kind != mero::ostrel::TRACE_NODE_SIGNAL) continue;
    NetSelection found;
    const QVector<NetBit> bits = bitsOf(node->displayName(), found, traced.empty() ? nullptr : &traced.back().bit);
    traced.push_back({node, int(bits.size()), bits.size() == 1 ? bits.first() : NetBit(), found.netWidth,
                      found.enumNames, found.wholeName});
  }
}

ResolvedUnit CoreResolver::resolve(const TriggerUnit& unit) {
  ResolvedUnit resolved;
  resolved.unit = &unit;
  for (const QString& name : unit.signalNames) {
    if (!goesOn()) return resolved;
    NetSelection found;
    const QVector<NetBit> bits = bitsOf(name, found, resolved.bits.isEmpty() ? nullptr : &resolved.bits.last());
    if (unit.signalNames.size() == 1) resolved.names = valueNames(found);
    if (bits.isEmpty()) resolved.vanished.append(name);
    resolved.bits += bits;
  }
  if (resolved.bits.isEmpty() || !resolved.vanished.isEmpty() || unit.value.isEmpty()) return resolved;
  parseUnitValue(unit.op, unit.radix, unit.value, resolved.bits.size(), resolved.value, resolved.mask, resolved.fault,
                 resolved.names);
  return resolved;
}

ResolvedCore CoreResolver::resolve(const Core& core) {
  ResolvedCore resolved;
  const CoreOptions& options = core.options;
  resolved.core = &core;
  resolved.sampleClock = resolve(options.sampleClock);
  if (options.sampleEnable) resolved.sampleEnable = resolve(options.sampleEnableSignal);
  if (options.triggerEnable) resolved.triggerEnable = resolve(options.triggerEnableSignal);
  if (core.trace->signalCount() <= kMaxPlanBits) resolveTraced(core.trace->nodes, resolved.traced);
  for (const auto& unit : core.dataset.units()) resolved.units.push_back(resolve(unit->unit));
  for (const auto& expression : core.dataset.expressions()) {
    if (!goesOn()) break;
    ResolvedExpression parsed;
    parsed.expression = expression.get();
    parseTriggerExpression(expression->text, parsed.parsed, parsed.fault);
    resolved.expressions.push_back(std::move(parsed));
  }
  return resolved;
}

}  // namespace

ResolvedCore resolveCore(const Core& core, const Design& design, const std::function<bool()>& beat) {
  return CoreResolver(design, beat).resolve(core);
}

}  // namespace ost

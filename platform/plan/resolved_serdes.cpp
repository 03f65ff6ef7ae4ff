// Looks up the names of the serdes core.
#include "platform/plan/resolved_serdes.h"

namespace ost {
namespace {

constexpr char kConstantLow[] = "VLO";  ///< A reset that never acts.

QVector<NetBit> bitsOf(const QString& name, const Design& design) {
  NetSelection found;
  QString ignored;
  QVector<NetBit> bits;
  if (name.isEmpty() || !design.exists(name) || !design.resolve(name, found, ignored)) return bits;
  for (int i = 0; i < found.bits.size(); ++i)
    bits.append({found.instancePath, found.net, found.bits[i], found.bitNames[i]});
  return bits;
}

}  // namespace

ResolvedSerdes resolveSerdes(const mero::ostrel::istSerdesCore& serdes, const Design& design) {
  ResolvedSerdes resolved;
  resolved.clock = {serdes.sampleClock, bitsOf(serdes.sampleClock, design)};
  if (serdes.resetSignal != QLatin1String(kConstantLow))
    resolved.reset = {serdes.resetSignal, bitsOf(serdes.resetSignal, design)};
  resolved.blocks = design.serdesBlocks(kMaxSerdesSignals + 1);
  for (const SerdesBlock& block : qAsConst(resolved.blocks))
    for (const WatchedNet& net : block.nets) {
      if (resolved.watched.size() > kMaxSerdesSignals) break;
      for (const NetBit& bit : bitsOf(net.name, design)) resolved.watched.append({bit, net.word});
    }
  return resolved;
}

PlanSerdes planSerdes(const ResolvedSerdes& resolved) {
  PlanSerdes plan;
  plan.clock = resolved.clock.bits.value(0);
  plan.hasReset = !resolved.reset.bits.isEmpty();
  if (plan.hasReset) plan.reset = resolved.reset.bits.first();
  for (const PlanWatched& one : resolved.watched)
    (one.word == QLatin1String(kSerdesClockWord) ? plan.clocks : plan.levels).append(one);
  return plan;
}

}  // namespace ost

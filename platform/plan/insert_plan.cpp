// The limits of a plan.
#include "platform/plan/insert_plan.h"

namespace ost {

bool canBeRead(const InsertPlan& plan, QString& error) {
  const auto within = [&error](const QString& object, qint64 count, const char* what, qint64 most) {
    if (count > most)
      error = QStringLiteral("%1: %2 %3, at most %4 can be read.")
                  .arg(object)
                  .arg(count)
                  .arg(QLatin1String(what))
                  .arg(most);
    return count <= most;
  };
  qint64 bits = 0, indexes = 0;
  for (const PlanCore& core : plan.cores) {
    qint64 shown = 0;
    for (const PlanProbe& probe : core.probes) {
      shown += probe.positions.size();
      indexes += probe.names.size();
    }
    bits += core.probeBits.size() + core.triggerBits.size();
    indexes += shown;
    for (const PlanUnit& unit : core.units) indexes += unit.inputs.size() + unit.names.size();
    for (const PlanExpression& expression : core.expressions) indexes += expression.units.size();
    const QString object = QStringLiteral("core ") + core.name;
    if (!within(object, core.expressions.size(), "trigger expressions", kMaxPlanExpressions) ||
        !within(object, core.depth * qMax(shown, qint64(core.sampleBits())), "bits of samples", kMaxPlanSampleBits))
      return false;
  }
  const QString all = QStringLiteral("all cores together");
  return within(all, plan.cores.size(), "cores", kMaxPlanCores) &&
         within(all, bits, "bits that are traced or compared", kMaxPlanBits) &&
         within(all, indexes, "mentions of bits and values in probes and units", kMaxPlanIndexes);
}

}  // namespace ost

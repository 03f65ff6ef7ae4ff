// The figures of a plan.
#include "platform/plan/insert_plan.h"

namespace ost {

qint64 PlanCore::readSampleBits() const {
  qint64 shown = 0;
  for (const PlanProbe& probe : probes) shown += probe.positions.size();
  return depth * qMax(shown, qint64(sampleBits()));
}

}  // namespace ost

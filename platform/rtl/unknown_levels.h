// What only a simulation has: where the x and z of the design end.
#pragma once

#include <QByteArray>

#include "platform/plan/insert_plan.h"

namespace ost {

/// The wires `<prefix>known_probe`, `_hits`, `_sample_en` and `_trig_en`, which the core takes in place of the design's
/// levels. An enable that is unknown is inactive, and so is a unit whose state depends on an unknown bit; each net that
/// is x or z in a run is reported once. In synthesis they are the levels themselves.
void writeKnownLevels(QByteArray& out, const PlanCore& core, const QByteArray& prefix, int units);

}  // namespace ost

// The serdes core within `ostrel_debug`.
#pragma once

#include "platform/rtl/debug_module.h"

namespace ost {

QList<DebugPort> serdesPorts(const PlanSerdes& serdes);

/// The core's instance.
void writeSerdes(QByteArray& out, const InsertPlan& plan);

}  // namespace ost

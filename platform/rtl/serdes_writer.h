// The serdes core within `ostrel_debug`.
#pragma once

#include "platform/rtl/debug_module.h"

namespace ost {

/// sd_clk; sd_rst, when it has a reset; sd_clocks and sd_levels, when there are such.
QList<DebugPort> serdesPorts(const PlanSerdes& serdes);

/// The core's instance.
void writeSerdes(QByteArray& out, const InsertPlan& plan);

}  // namespace ost

// The rules for the serdes core: its clock and reset, the blocks that the design marks, and what they let watch.
#pragma once

#include "platform/istdata/project.h"
#include "platform/netlist/netlist.h"
#include "platform/rules/core_check.h"

namespace ost {

/// `netlist` may be null, see checkDesignRules().
void checkSerdes(const mero::ostrel::istSerdesCore& serdes, const Design& design, const Netlist* netlist,
                 FindingList& findings);

}  // namespace ost

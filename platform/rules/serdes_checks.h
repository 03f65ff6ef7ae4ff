// The rules for the serdes core: its clock and reset, the blocks that the design marks, and what they let watch.
#pragma once

#include "platform/istdata/project.h"
#include "platform/netlist/netlist.h"
#include "platform/rules/core_check.h"

namespace ost {

/// The project's serdes core as planned, when it has one; of use only without an error. `netlist` may be null, see
/// checkDesignRules().
std::optional<PlanSerdes> checkSerdes(const mero::ostrel::istProject& project, const Design& design,
                                      const Netlist* netlist, FindingList& findings);

}  // namespace ost

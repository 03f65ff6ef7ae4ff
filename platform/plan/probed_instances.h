// Which instances of a design can be simulated from a core's capture alone.
#pragma once

#include "platform/netlist/netlist.h"
#include "platform/plan/insert_plan.h"

namespace ost {

/// Fills PlanCore::instances: each instance with a captured net in it, all of whose inputs are captured, constant or
/// the core's sample clock, with at least one captured output and no inout.
void findProbedInstances(const Netlist& netlist, InsertPlan& plan);

}  // namespace ost

// Turns the enabled cores of a project, their names resolved, into an InsertPlan.
#pragma once

#include "platform/plan/insert_plan.h"
#include "platform/plan/resolved_core.h"

namespace ost {

/// Plans `cores`, the enabled ones of `project`, and its Wishbone master as the rules found it, for a project that the
/// design rules found without an error. What they should have refused is an internal error: false with a text in
/// `error`, and `plan` is unchanged.
bool planInsertion(const mero::ostrel::istProject& project, const Design& design,
                   const std::vector<ResolvedCore>& cores, const std::optional<PlanWishbone>& wishbone,
                   InsertPlan& plan, QString& error);

}  // namespace ost

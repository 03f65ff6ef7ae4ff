// Turns the enabled cores of a project into an InsertPlan against a design.
#pragma once

#include "platform/design/design.h"
#include "platform/istdata/project.h"
#include "platform/plan/insert_plan.h"

namespace ost {

/// False with one text in `error` when something does not resolve; the design rules report the same faults one by one
/// with their way out, so a project that passed them plans without fail.
bool planInsertion(const mero::ostrel::istProject& project, const Design& design, InsertPlan& plan, QString& error);

}  // namespace ost

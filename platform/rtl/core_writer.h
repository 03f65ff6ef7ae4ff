// One core within `ostrel_debug`: its ostrel_core, and the units and expressions that the plan configures.
#pragma once

#include <QByteArray>

#include "platform/plan/insert_plan.h"

namespace ost {

/// `c<index>_`, with which all names of a core begin.
QByteArray corePrefix(int core);

bool hasTriggerOut(const PlanCore& core);

/// Wires, units, expressions and ostrel_core of the core `index` of the plan.
void writeCore(QByteArray& out, const InsertPlan& plan, int index);

}  // namespace ost

// The insertion plan of a project, made by hand: for benches that join the generated core to the device without the
// inserter.
#pragma once

#include "platform/insert/insert_plan.h"
#include "tests/sim/oracle/project.h"

namespace oracle {

ost::InsertPlan directPlan(const Project& project, quint32 seed);

}  // namespace oracle

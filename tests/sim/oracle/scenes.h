// What random projects do not reach: directed scenes on one project.
#pragma once

#include "tests/sim/oracle/insertion.h"
#include "tests/sim/oracle/runs.h"

namespace oracle {

/// All of them; throws Difference, whose text names the scene.
void playScenes(const Settings& settings, Totals& totals);

}  // namespace oracle

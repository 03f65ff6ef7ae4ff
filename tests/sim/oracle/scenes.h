// What random projects do not reach: directed scenes on one project.
#pragma once

#include "tests/sim/oracle/insertion.h"
#include "tests/sim/oracle/runs.h"

namespace oracle {

/// On a device whose nets are x or z at times: what is known is captured as it is, and the simulation names the rest.
void unknownLevels(const Settings& settings, Totals& totals);
/// All of them; throws Difference, whose text names the scene.
void playScenes(const Settings& settings, Totals& totals);

}  // namespace oracle

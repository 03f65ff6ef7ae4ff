// The names that the serdes core is about, as the design has them: judged by the design rules, taken over by the
// planner.
#pragma once

#include "platform/design/design.h"
#include "platform/istdata/project.h"
#include "platform/plan/insert_plan.h"
#include "platform/plan/resolved_core.h"

namespace ost {

struct ResolvedSerdes {
  ResolvedName clock;
  ResolvedName reset;            ///< Without a name when there is none.
  QVector<SerdesBlock> blocks;   ///< One more than can be watched, at most.
  QVector<PlanWatched> watched;  ///< Bit by bit, in the order of the blocks and their nets.
};

/// `serdes` of a project, and the marked blocks of the design.
ResolvedSerdes resolveSerdes(const mero::ostrel::istSerdesCore& serdes, const Design& design);

/// The plan of what the rules found without an error.
PlanSerdes planSerdes(const ResolvedSerdes& resolved);

}  // namespace ost

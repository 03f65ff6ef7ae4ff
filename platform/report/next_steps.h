// What comes after an insertion, with the paths and pins of this one.
#pragma once

#include "platform/report/run_report.h"

namespace ost {

/// The section that ends a report.
ReportSection nextSteps(const InsertPlan& plan, const RunFacts& facts);

}  // namespace ost

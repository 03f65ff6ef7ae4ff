// The report of an insertion: what is probed where, the cores and their cost, the rules, the proof, how to go on.
#pragma once

#include <QStringList>

#include "platform/design/design.h"
#include "platform/plan/insert_plan.h"
#include "platform/report/report_document.h"

namespace ost {

/// What the stages of a run found; texts are byte text.
struct RunFacts {
  QString folder;        ///< The output folder's file name (Unicode).
  QString constraints;   ///< Name of the constraint files without their ends.
  QStringList findings;  ///< Lines of the design-rule check.
  QStringList proof;     ///< Lines of the proof; empty when there was none.
  QStringList blackBoxes;
};

ReportDocument reportOf(const InsertPlan& plan, const Design& design, const RunFacts& facts);

}  // namespace ost

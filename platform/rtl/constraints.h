// Timing constraints of an insertion: TCK's clock and every crossing between it and the sample clocks.
#pragma once

#include <QByteArray>

#include "platform/plan/insert_plan.h"

namespace ost {

enum class ConstraintDialect {
  Sdc,  ///< Synopsys Design Constraints.
  Xdc,  ///< Its kin with a maximum delay of the data path alone.
};

/// The file's text; `instance` is the debug module's in the top. Cells go by the names that synthesis gives the
/// registers of the core: `name_reg`, `name_reg[3]` or `name[3]_reg`.
QByteArray constraintsText(const InsertPlan& plan, const QByteArray& instance, ConstraintDialect dialect);

}  // namespace ost

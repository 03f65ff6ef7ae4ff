// From the words of `ost_design jtag` to the way that an insertion takes.
#pragma once

#include "framework/ist_com_data.h"
#include "platform/design/design.h"
#include "platform/plan/insert_plan.h"

namespace ost {

/// Reads a wrapper's file and has Yosys check its ports. False with one text for the user in `error`; `jtag` is
/// unchanged then.
ISTCOMDATA_API bool planJtag(const JtagWords& words, PlanJtag& jtag, QString& error);

}  // namespace ost

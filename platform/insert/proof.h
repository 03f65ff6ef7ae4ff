// Proves that an insertion has not disturbed the user's logic, and that every probe looks at the net it should.
#pragma once

#include <QString>
#include <QStringList>
#include <functional>
#include <memory>

#include "platform/design/design.h"
#include "platform/netlist/netlist.h"
#include "platform/plan/insert_plan.h"

namespace ost {

struct ProofFiles {
  QString instrumented;  ///< The instrumented design, Verilog; a file name (Unicode).
  QString debugModule;   ///< The generated ostrel_debug.v.
};

struct ProofReport {
  QStringList lines;  ///< What was proved, for the console.
  int modulesProved = 0;
  int probesChecked = 0;
};

/// Compares the design's sources with the written files: the modules that the insertion changed are equivalent in their
/// user's ports and registers, the others too, and each input of the debug module is the very net of the plan. Takes
/// nothing from the insertion but the plan and the netlist of the original. False with what differs in `error`.
bool proveUnchanged(const InsertPlan& plan, const Design& design, std::shared_ptr<const Netlist> netlist,
                    const ProofFiles& files, const std::function<bool()>& idle, ProofReport& report, QString& error);

}  // namespace ost

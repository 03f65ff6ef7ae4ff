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

struct ProofHooks {
  std::function<void(const QString& stage)> stage;  ///< What is under way from now on. May be empty.
  std::function<bool()> idle;                       ///< Called while the proof works; false cancels.
};

struct ProofReport {
  QStringList lines;  ///< What was proved, for the console.
  int modulesProved = 0;
  int probesChecked = 0;
  QStringList undecided;  ///< Modules, with the reason in brackets.
};

/// Compares the design's netlist with the written files: every module does the same at its ports and instances and in
/// its registers and memories, and each input of the debug module is the very net of the plan. Takes nothing from the
/// insertion but the plan and the netlist of the original. False with what differs in `error`; undecided modules are
/// no failure.
bool proveUnchanged(const InsertPlan& plan, const Design& design, std::shared_ptr<const Netlist> netlist,
                    const ProofFiles& files, const ProofHooks& hooks, ProofReport& report, QString& error);

}  // namespace ost

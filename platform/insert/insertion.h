// Runs an insertion from plan to output folder.
#pragma once

#include <functional>

#include "platform/design/design_session.h"
#include "platform/netlist/netlist.h"
#include "platform/plan/insert_plan.h"

namespace ost {

struct InsertionHooks {
  std::function<void(const QString& line)> progress;  ///< A line for each stage, without a line feed.
  std::function<void(const QString& stage)> stage;    ///< What is under way from now on, for a display of progress.
  std::function<bool()> idle;                         ///< Called while the work goes on; false cancels.
};

struct InsertionRequest {
  QString outputDirectory;  ///< File name (Unicode), replaced as a whole after success.
  ProofMode proof = ProofMode::Off;
  QStringList findings;  ///< Lines of the design-rule check, for the report.
  QString project;       ///< File name of the project without its folder, see OutputFolder; empty when there is none.
};

/// Writes the instrumented design, the core's Verilog, file list and capture map. On failure nothing in the output
/// folder has changed and `error` says why. `proved`, when given: the proof's counts as a clause that begins with "; ",
/// or empty without a proof.
bool runInsertion(const InsertPlan& plan, const Design& design, std::shared_ptr<const Netlist> netlist,
                  const InsertionRequest& request, const InsertionHooks& hooks, QString& error,
                  QString* proved = nullptr);

}  // namespace ost

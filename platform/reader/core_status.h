// The status word of a core and what it says about a run that has not triggered.
#pragma once

#include <QStringList>
#include <QVector>

#include "platform/reader/hub_frame.h"
#include "platform/reader/run_settings.h"

namespace ost {

struct CoreStatus {
  HubFlags flags;
  int tag = 0;
  bool running = false, searching = false, triggered = false, triggerEnabled = false, sampled = false;
  int window = 0;      ///< Windows completed.
  int oldest = 0;      ///< Position of the oldest sample; with one window, when done.
  QVector<int> steps;  ///< Step that each expression waits in, from 0.
  int events = 0;      ///< Completions counted in this window.
};

CoreStatus parseStatus(const PlanCore& core, const HubReply& reply);

/// Why the run makes no progress, a line for each reason, with the names of the plan.
QStringList explainWaiting(const RunSettings& settings, const CoreStatus& status);

/// Where the run stands, short enough for a line on a terminal.
QString progressText(const RunSettings& settings, const CoreStatus& status);

/// The core's state in one line, for listings.
QString statusSummary(const PlanCore& core, const CoreStatus& status);

}  // namespace ost

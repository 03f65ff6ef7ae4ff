// The design-rule check of a project: every finding at once, each with its number, severity, object and way out.
#pragma once

#include <QList>
#include <QString>
#include <functional>
#include <memory>

#include "platform/design/design.h"
#include "platform/istdata/project.h"
#include "platform/netlist/netlist.h"
#include "platform/plan/insert_plan.h"

namespace ost {

struct Finding {
  enum Severity { Error, Warning };
  int number = 0;  ///< Stable, shown as "DRC-<number>".
  Severity severity = Error;
  QString object;  ///< "core c1", "core c1, unit TU2", ...
  QString text;    ///< What is wrong.
  QString wayOut;  ///< What to do about it, in the user's commands.
};

struct DesignCheck {
  QList<Finding> findings;
  /// What is to be inserted. Null when a finding is an error, when the check was ended early, and with a `fault`.
  std::shared_ptr<const InsertPlan> plan;
  QString fault;  ///< An internal error: the rules let something pass that cannot be planned.
};

/// Checks and plans the enabled cores. `netlist` may be null: the rules that need drivers are then left out. `idle` is
/// called some times a second; once it has returned false the check ends, with the findings so far.
DesignCheck checkDesignRules(const mero::ostrel::istProject& project, const Design& design, const Netlist* netlist,
                             const std::function<bool()>& idle = {});

/// The report shown to the user: a line for each finding, errors first, and a closing count.
QString designRuleReport(const QList<Finding>& findings);
bool hasErrors(const QList<Finding>& findings);

}  // namespace ost

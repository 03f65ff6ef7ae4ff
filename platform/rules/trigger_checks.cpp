// Checks of a core's trigger units and trigger expressions.
#include "platform/plan/insert_plan.h"
#include "platform/rules/core_check.h"
#include "platform/text/numbers.h"

namespace ost {

void CoreCheck::checkUnits() const {
  for (const ResolvedUnit& unit : resolved_.units) checkUnit(unit);
}

void CoreCheck::checkUnit(const ResolvedUnit& resolved) const {
  const TriggerUnit& unit = *resolved.unit;
  const QString part = QLatin1String("unit ") + unit.name;
  const FindingList::Fills fills = {{QStringLiteral("<unit>"), unit.name}};
  if (unit.signalNames.isEmpty())
    report(DesignRule::UnitWithoutSignals, part, QStringLiteral("it has no signals"), fills);
  if (unit.value.isEmpty()) report(DesignRule::UnitWithoutValue, part, QStringLiteral("it has no value"), fills);
  for (const QString& name : resolved.vanished) {
    if (!pulse_.beat()) return;
    reportVanished(DesignRule::UnitSignalVanished, part, QStringLiteral("signal"), name, fills);
  }
  if (!resolved.fault.isEmpty()) report(DesignRule::UnitValue, part, resolved.fault, fills);
}

void CoreCheck::checkExpressions() const {
  const size_t count = core_.dataset.expressions().size();
  if (count == 0) report(DesignRule::NoExpression, QString(), QStringLiteral("it has no trigger expression"));
  if (count > size_t(kMaxPlanExpressions))
    report(
        DesignRule::TooManyExpressions, QString(),
        QStringLiteral("it has %1 trigger expressions, at most %2 can be set up").arg(count).arg(kMaxPlanExpressions));
  for (const ResolvedExpression& expression : resolved_.expressions) checkExpression(expression);
}

void CoreCheck::checkExpression(const ResolvedExpression& resolved) const {
  const TriggerExpression& expression = *resolved.expression;
  const ParsedExpression& parsed = resolved.parsed;
  const QString part = QLatin1String("expression ") + expression.name;
  const FindingList::Fills fills = {{QStringLiteral("<name>"), expression.name}};
  if (!resolved.fault.isEmpty()) {
    const int units = unitNamesIn(expression.text).size();
    if (units > kMaxExpressionUnits)
      report(DesignRule::ExpressionTooManyUnits, part,
             QStringLiteral("it uses %1 trigger units, at most %2 are allowed").arg(units).arg(kMaxExpressionUnits),
             fills);
    else
      report(DesignRule::ExpressionUnreadable, part, resolved.fault, fills);
    return;
  }

  QStringList unknown;
  for (const QString& unit : parsed.units)
    if (!core_.dataset.findUnit(unit)) unknown.append(unit);
  if (!unknown.isEmpty())
    report(DesignRule::ExpressionUnknownUnit, part,
           QStringLiteral("it names unknown units: %1").arg(unknown.join(QStringLiteral(", "))),
           fills + FindingList::Fills{{QStringLiteral("<unit>"), unknown.first()}});

  const int steps = parsed.steps.size();
  if (steps > expression.maxSequenceDepth)
    report(DesignRule::ExpressionTooDeep, part,
           QStringLiteral("it has %1, its max_seq_depth is %2")
               .arg(counted(steps, "step"))
               .arg(expression.maxSequenceDepth),
           fills + FindingList::Fills{{QStringLiteral("<steps>"), QString::number(powerOfTwoFrom(steps))}});
  int farthest = 0;
  for (const ParsedStep& step : parsed.steps) farthest = qMax(farthest, step.count);
  if (farthest > expression.maxEventCount)
    report(DesignRule::ExpressionCountsTooFar, part,
           QStringLiteral("it counts to %1, its max_event_count is %2").arg(farthest).arg(expression.maxEventCount),
           fills + FindingList::Fills{{QStringLiteral("<count>"), QString::number(powerOfTwoFrom(farthest))}});
}

}  // namespace ost

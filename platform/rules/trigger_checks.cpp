// Checks of a core's trigger units and trigger expressions.
#include <QSet>

#include "platform/rules/core_check.h"
#include "platform/trigger/trigger_expression.h"
#include "platform/trigger/unit_value.h"

namespace ost {

namespace {

/// The least power of two that is not below `value`.
int powerOfTwoFrom(int value) {
  int power = 1;
  while (power < value) power *= 2;
  return power;
}

/// Different words of `text` that look like unit names; it need not be a well-formed expression.
QSet<QString> unitWords(const QString& text) {
  QSet<QString> words;
  QString word;
  for (int i = 0; i <= text.size(); ++i) {
    const char c = i < text.size() ? text.at(i).toLatin1() : ' ';
    const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
    const bool digit = c >= '0' && c <= '9';
    if (letter || digit) {
      word += QLatin1Char(c);
    } else if (!word.isEmpty()) {
      if (!word.at(0).isDigit()) words.insert(word);
      word.clear();
    }
  }
  return words;
}

}  // namespace

void CoreCheck::checkUnits() {
  for (const auto& unit : core_.dataset.units()) checkUnit(unit->unit);
}

void CoreCheck::checkUnit(const TriggerUnit& unit) {
  const QString part = QLatin1String("unit ") + unit.name;
  const FindingList::Fills fills = {{QStringLiteral("<unit>"), unit.name}};
  if (unit.signalNames.isEmpty())
    report(DesignRule::UnitWithoutSignals, part, QStringLiteral("it has no signals"), fills);
  if (unit.value.isEmpty()) report(DesignRule::UnitWithoutValue, part, QStringLiteral("it has no value"), fills);

  ResolvedBits watched{object(part), {}};
  EnumNames names;
  bool complete = !unit.signalNames.isEmpty() && !unit.value.isEmpty();
  for (const QString& name : unit.signalNames) {
    NetSelection selection;
    QString error;
    if (!design_.resolve(name, selection, error)) {
      reportVanished(DesignRule::UnitSignalVanished, part, QStringLiteral("signal"), name, fills);
      complete = false;
      continue;
    }
    watched.append(selection);
    if (unit.signalNames.size() == 1) names = valueNames(selection);
    if (!pulse_.beat()) return;
  }
  watched_.append(watched);
  if (!complete) return;

  QByteArray value, mask;
  QString error;
  if (!parseUnitValue(unit.op, unit.radix, unit.value, watched.bits.size(), value, mask, error, names))
    report(DesignRule::UnitValue, part, error, fills);
}

void CoreCheck::checkExpressions() const {
  const size_t count = core_.dataset.expressions().size();
  if (count == 0) report(DesignRule::NoExpression, QString(), QStringLiteral("it has no trigger expression"));
  if (count > size_t(kMaxPlanExpressions))
    report(
        DesignRule::TooManyExpressions, QString(),
        QStringLiteral("it has %1 trigger expressions, at most %2 can be set up").arg(count).arg(kMaxPlanExpressions));
  for (const auto& expression : core_.dataset.expressions()) {
    if (!pulse_.beat()) return;
    checkExpression(*expression);
  }
}

void CoreCheck::checkExpression(const TriggerExpression& expression) const {
  const QString part = QLatin1String("expression ") + expression.name;
  const FindingList::Fills fills = {{QStringLiteral("<name>"), expression.name}};
  ParsedExpression parsed;
  QString error;
  if (!parseTriggerExpression(expression.text, parsed, error)) {
    const int units = unitWords(expression.text).size();
    if (units > kMaxExpressionUnits)
      report(DesignRule::ExpressionTooManyUnits, part,
             QStringLiteral("it uses %1 trigger units, at most %2 go").arg(units).arg(kMaxExpressionUnits), fills);
    else
      report(DesignRule::ExpressionUnreadable, part, error, fills);
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

// Checks of run-time settings and the configuration chain made from them (docs/debug-core.md, section 4).
#include "platform/reader/run_settings.h"

#include <algorithm>

#include "platform/plan/core_layout.h"
#include "platform/reader/hub_frame.h"
#include "platform/trigger/trigger_expression.h"
#include "platform/trigger/unit_value.h"

namespace ost {
namespace {

QString namesOf(const PlanCore& core) {
  QStringList names;
  for (const PlanUnit& unit : core.units) names += unit.name;
  return names.isEmpty() ? QStringLiteral("none") : names.join(QLatin1String(", "));
}

QString noExpressionText(const PlanCore& core, const QString& name) {
  QStringList known;
  for (const PlanExpression& expression : core.expressions) known += expression.name;
  return QStringLiteral("The core \"%1\" has no trigger expression \"%2\"; its expressions are: %3.")
      .arg(core.name, name, known.isEmpty() ? QStringLiteral("none") : known.join(QLatin1String(", ")));
}

/// Operators that a unit's hardware can change between.
bool classHas(UnitClass unitClass, Operator op) {
  switch (unitClass) {
    case UnitClass::Match:
      return op == Operator::Equal || op == Operator::NotEqual || op == Operator::RisingEdge ||
             op == Operator::FallingEdge;
    case UnitClass::Order:
      return op == Operator::Equal || op == Operator::NotEqual || op == Operator::Less || op == Operator::LessEqual ||
             op == Operator::Greater || op == Operator::GreaterEqual;
    case UnitClass::Serial:
      return op == Operator::SerialCompare;
  }
  return false;
}

QByteArray bitsOf(const QByteArray& digits) {
  QByteArray bits;
  for (char digit : digits) bits += static_cast<char>(digit == '1');
  return bits;
}

QByteArray flag(bool value) {
  return QByteArray(1, static_cast<char>(value));
}

QByteArray unitChain(const PlanUnit& unit) {
  const Operator op = unit.op;
  switch (unit.unitClass) {
    case UnitClass::Match: {
      // The watched bits are in the mask for rising edges and in the value for falling ones.
      const QByteArray none(unit.width, '\0'), mask = bitsOf(unit.mask);
      if (op == Operator::RisingEdge) return flag(false) + flag(true) + none + mask;
      if (op == Operator::FallingEdge) return flag(false) + flag(true) + mask + none;
      return flag(op == Operator::Equal) + flag(false) + bitsOf(unit.value) + mask;
    }
    case UnitClass::Order: {
      const bool equality = op == Operator::Equal || op == Operator::NotEqual;
      const bool inverted = op == Operator::NotEqual || op == Operator::Greater || op == Operator::GreaterEqual;
      const bool orEqual = op == Operator::LessEqual || op == Operator::Greater;
      return flag(inverted) + flag(equality) + flag(orEqual) + bitsOf(unit.value);
    }
    case UnitClass::Serial:
      break;
  }
  return bitsOf(unit.value) + bitsOf(unit.mask);
}

}  // namespace

RunSettings::RunSettings(const PlanCore& core)
    : core_(core),
      position_(core.windowSamples / 2),
      windows_(core.windows),
      eventCount_(core.eventCounter ? core.eventCount : 1),
      enabled_(core.expressions.size(), true) {}

bool RunSettings::setPosition(const QString& text, QString& error) {
  const bool percent = text.endsWith(QLatin1Char('%'));
  bool isNumber = false;
  const int number = text.left(text.size() - percent).toInt(&isNumber);
  const int position = percent ? static_cast<int>(qint64(core_.windowSamples) * number / 100) : number;
  if (!isNumber || number < 0 || (percent ? number > 100 : number >= core_.windowSamples)) {
    error = QStringLiteral(
                "The position \"%1\" is not valid; it must be 0 to %2 samples before the trigger, or 0% to 100%.")
                .arg(text, QString::number(core_.windowSamples - 1));
    return false;
  }
  position_ = qMin(position, core_.windowSamples - 1);
  return true;
}

bool RunSettings::setUnit(const QString& name, const QString& operatorWord, const QString& valueWord, QString& error) {
  const auto found =
      std::find_if(core_.units.begin(), core_.units.end(), [&](const PlanUnit& one) { return one.name == name; });
  if (found == core_.units.end()) {
    error = QStringLiteral("The core \"%1\" has no trigger unit \"%2\"; its units are: %3.")
                .arg(core_.name, name, namesOf(core_));
    return false;
  }
  PlanUnit& unit = *found;
  Operator op = unit.op;
  if (!operatorWord.isNull() && !(operatorFromText(operatorWord, op) && classHas(unit.unitClass, op))) {
    QStringList choices;
    for (int i = 0; i <= static_cast<int>(Operator::SerialCompare); ++i)
      if (classHas(unit.unitClass, static_cast<Operator>(i))) choices += operatorText(static_cast<Operator>(i));
    error = QStringLiteral(
                "The hardware of the unit \"%1\" does not have the operator \"%2\"; choose one of %3, or insert the "
                "core again.")
                .arg(unit.name, operatorWord, choices.join(QLatin1Char(' ')));
    return false;
  }
  const QString valueText = valueWord.isNull() ? unit.valueText : valueWord;
  QByteArray value, mask;
  const bool serial = unit.unitClass == UnitClass::Serial;
  QString reason;
  bool good = parseUnitValue(op, unit.radix, valueText, serial ? 1 : unit.width, value, mask, reason, unit.names);
  if (good && value.size() > unit.width) {
    reason = QStringLiteral("the pattern in hardware has %1 samples").arg(unit.width);
    good = false;
  }
  if (good && unit.unitClass == UnitClass::Order && mask.contains('0')) {
    reason = QStringLiteral("this unit's hardware has no don't-care digits");
    good = false;
  }
  if (!good) {
    error = QStringLiteral("The value \"%1\" is not valid for the unit \"%2\" with %3 (%4): %5")
                .arg(valueText, unit.name, operatorText(op), radixText(unit.radix), reason);
    if (!error.endsWith(QLatin1Char('.'))) error += QLatin1Char('.');
    return false;
  }
  // The oldest samples of a shorter serial pattern are don't-care.
  unit.value = value.leftJustified(unit.width, '0');
  unit.mask = mask.leftJustified(unit.width, '0');
  unit.op = op;
  unit.valueText = valueText;
  return true;
}

bool RunSettings::setExpression(const QString& name, const QString& text, QString& error) {
  const auto found = std::find_if(core_.expressions.begin(), core_.expressions.end(),
                                  [&](const PlanExpression& one) { return one.name == name; });
  if (found == core_.expressions.end()) {
    error = noExpressionText(core_, name);
    return false;
  }
  ParsedExpression parsed;
  QString reason;
  if (!parseTriggerExpression(text, parsed, reason)) {
    error = QStringLiteral("The expression \"%1\" for \"%2\" cannot be read: %3").arg(text, name, reason);
    if (!error.endsWith(QLatin1Char('.'))) error += QLatin1Char('.');
    return false;
  }
  QStringList built, missing;
  for (const int unit : found->units) built += core_.units[unit].name;
  for (const QString& unit : parsed.units)
    if (!built.contains(unit))
      missing += QStringLiteral("the unit \"%1\" (it has %2)").arg(unit, built.join(QLatin1String(", ")));
  if (parsed.steps.size() > found->maxSequenceDepth)
    missing += QStringLiteral("%1 steps (it has %2)").arg(parsed.steps.size()).arg(found->maxSequenceDepth);
  for (const ParsedStep& step : parsed.steps)
    if (step.count > found->maxEventCount)
      missing += QStringLiteral("a count of %1 (at most %2)").arg(step.count).arg(found->maxEventCount);
  if (!missing.isEmpty()) {
    error = QStringLiteral(
                "The hardware of the expression \"%1\" has no room for \"%2\": missing is %3. Insert the core again "
                "with it.")
                .arg(name, text, missing.join(QLatin1String(" and ")));
    return false;
  }
  found->text = text;
  found->steps.clear();
  for (const ParsedStep& step : parsed.steps) {
    PlanStep planned{QByteArray(found->tableRows(), '0'), step.count};
    for (int row = 0; row < found->tableRows(); ++row) {
      int parsedRow = 0;
      for (int i = 0; i < parsed.units.size(); ++i) parsedRow |= (row >> built.indexOf(parsed.units[i]) & 1) << i;
      planned.truthTable[row] = step.truthTable[parsedRow];
    }
    found->steps.append(planned);
  }
  return true;
}

bool RunSettings::triggerNow(QString& error) {
  if (core_.expressions.isEmpty()) {
    error =
        QStringLiteral("The core \"%1\" has no trigger expression, without which it cannot trigger.").arg(core_.name);
    return false;
  }
  PlanExpression& first = core_.expressions[0];
  first.text = QStringLiteral("at once");
  first.steps = {{QByteArray(first.tableRows(), '1'), 1}};
  enabled_.fill(false);
  enabled_[0] = true;
  eventCount_ = 1;
  return true;
}

bool RunSettings::chooseExpressions(const QString& names, QString& error) {
  QVector<bool> chosen(core_.expressions.size(), false);
  for (const QString& name : names.split(QLatin1Char(','))) {
    bool found = false;
    for (int i = 0; i < core_.expressions.size(); ++i) {
      if (core_.expressions[i].name != name) continue;
      chosen[i] = true;
      found = true;
    }
    if (!found) {
      error = noExpressionText(core_, name);
      return false;
    }
  }
  enabled_ = chosen;
  return true;
}

bool RunSettings::setEventCount(int count, QString& error) {
  const int most = core_.eventCounter ? core_.eventCount : 1;
  if (count < 1 || count > most) {
    error = QStringLiteral("The core \"%1\" can count 1 to %2 events%3.")
                .arg(core_.name, QString::number(most),
                     core_.eventCounter ? QString() : QStringLiteral(" (it has no event counter)"));
    return false;
  }
  eventCount_ = count;
  return true;
}

bool RunSettings::setWindows(int count, QString& error) {
  if (count < 1 || count > core_.windows) {
    error =
        QStringLiteral("The core \"%1\" can capture 1 to %2 windows.").arg(core_.name, QString::number(core_.windows));
    return false;
  }
  windows_ = count;
  return true;
}

QByteArray RunSettings::table(int expression) const {
  const PlanExpression& plan = core_.expressions[expression];
  QByteArray bits;
  for (int row = 0; row < plan.tableRows(); ++row)
    for (int step = 0; step < plan.maxSequenceDepth; ++step)
      bits += flag(step < plan.steps.size() && plan.steps[step].truthTable[row] == '1');
  return bits;
}

QByteArray RunSettings::chain() const {
  const CoreLayout layout(core_);
  QByteArray bits = numberBits(position_, layout.positionBits) + numberBits(windows_ - 1, layout.windowBits) +
                    numberBits(eventCount_ - 1, layout.eventBits);
  for (const PlanUnit& unit : core_.units) bits += unitChain(unit);
  for (int i = 0; i < core_.expressions.size(); ++i) {
    const PlanExpression& plan = core_.expressions[i];
    const ExpressionLayout& fields = layout.expressions[i];
    bits += flag(enabled_[i]) + numberBits(plan.steps.size() - 1, fields.stepBits);
    for (int step = 0; step < plan.maxSequenceDepth; ++step)
      bits += numberBits(step < plan.steps.size() ? plan.steps[step].count - 1 : 0, fields.countBits);
    if (fields.store == TableStore::Chain) bits += table(i);
  }
  return bits;
}

}  // namespace ost

// Trigger units: every edit is made on a copy, checked as a whole, and put in place only then.
#include "framework/ist_com_data.h"
#include "platform/istcomdata/name_patterns.h"
#include "platform/istcomdata/service_private.h"
#include "platform/istdata/project_checks.h"
#include "platform/text/near_names.h"
#include "platform/trigger/trigger_expression.h"
#include "platform/trigger/unit_value.h"

namespace mero {
namespace ostrel {

namespace {

bool setOperator(const QString& text, ost::TriggerUnit& unit, QString& error) {
  if (text.isEmpty() || ost::operatorFromText(text, unit.op)) return true;
  error =
      QStringLiteral("%1 is not a valid operator; use ==, !=, >, >=, <, <=, .RE., .FE. or .SC.").arg(ost::quoted(text));
  return false;
}

bool setRadix(const QString& word, ost::TriggerUnit& unit, QString& error) {
  if (word.isEmpty() || ost::radixFromText(word, unit.radix)) return true;
  error = QStringLiteral("%1 is not a valid radix; use bin, oct, dec or hex.").arg(ost::quoted(word));
  return false;
}

bool addSignalNames(QStringList names, ost::TriggerUnit& unit, QString& error) {
  if (!ost::expandNetPatterns(names, error)) return false;
  for (const QString& name : names) {
    ost::NetSelection selection;
    if (!ost::resolveNet(name, selection, error)) return false;
    if (unit.signalNames.contains(selection.canonicalName)) {
      error = QStringLiteral("Signal %1 would be in the unit twice.").arg(ost::quoted(name));
      return false;
    }
    unit.signalNames << selection.canonicalName;
    if (unit.signalNames.size() <= ost::kMaxUnitWidth) continue;
    error = QStringLiteral("A unit compares at most %1 bits.").arg(ost::kMaxUnitWidth);
    return false;
  }
  return true;
}

bool removeSignalNames(QStringList names, ost::TriggerUnit& unit, QString& error) {
  if (!ost::expandPatterns(unit.signalNames, QStringLiteral("unit ") + ost::quoted(unit.name), names, error))
    return false;
  for (const QString& name : names) {
    ost::NetSelection selection;
    QString ignored;
    if (unit.signalNames.removeOne(name)) continue;
    if (ost::resolveNet(name, selection, ignored) && unit.signalNames.removeOne(selection.canonicalName)) continue;
    ost::NearestNames near(name);
    for (const QString& known : unit.signalNames) near.offer(known);
    error =
        QStringLiteral("Signal %1 is not in unit %2%3.").arg(ost::quoted(name), ost::quoted(unit.name), near.hint());
    return false;
  }
  return true;
}

/// Bits that the unit compares; 0 when one of its signals is not in the design, or none is loaded. `names` are those
/// of their values.
int widthOf(const ost::TriggerUnit& unit, ost::EnumNames& names) {
  int width = 0;
  names.clear();
  for (const QString& name : unit.signalNames) {
    ost::NetSelection selection;
    QString ignored;
    if (!ost::resolveNet(name, selection, ignored)) return 0;
    width += selection.bits.size();
    if (unit.signalNames.size() == 1) names = valueNames(selection);
  }
  return width;
}

/// A unit may still lack signals or a value (the design rules report that); what it has must fit together.
bool checkUnit(const ost::TriggerUnit& unit, QString& error) {
  ost::EnumNames names;
  const int width = widthOf(unit, names);
  if (width > ost::kMaxUnitWidth) {
    error =
        QStringLiteral("A unit compares at most %1 bits; these signals have %2.").arg(ost::kMaxUnitWidth).arg(width);
    return false;
  }
  QByteArray value, mask;
  if (unit.op == ost::Operator::SerialCompare && width > 1) {
    error = QStringLiteral("%1 watches one signal, not %2 bits.").arg(ost::operatorText(unit.op)).arg(width);
    return false;
  }
  if (width == 0 || unit.value.isEmpty()) return ost::checkUnitDigits(unit, error);
  return ost::parseUnitValue(unit.op, unit.radix, unit.value, width, value, mask, error, names);
}

/// The digits of `before` written in the new radix, so that changing only the radix keeps what is compared.
bool convertValue(const ost::TriggerUnit& before, ost::TriggerUnit& unit, QString& error) {
  if (before.value.isEmpty() || before.radix == unit.radix) return true;
  ost::EnumNames names;
  int width = widthOf(before, names);
  if (findEnumName(names, before.value)) return true;
  if (before.op == ost::Operator::SerialCompare) width = 1;
  QByteArray value, mask;
  QString ignored;
  if (width > 0 && ost::parseUnitValue(before.op, before.radix, before.value, width, value, mask, ignored)) {
    const bool digitsAreBits = before.op == ost::Operator::RisingEdge || before.op == ost::Operator::FallingEdge;
    if (digitsAreBits) mask.fill('1');
    const bool whole = before.op != ost::Operator::SerialCompare || unit.radix == ost::Radix::Bin ||
                       value.size() % (unit.radix == ost::Radix::Oct ? 3 : 4) == 0;
    if (whole && ost::formatUnitValue(unit.radix, value, mask, unit.value)) return true;
  }
  error = QStringLiteral("The value %1 cannot be written in radix %2; give a value with the radix (-val).")
              .arg(ost::quoted(before.value), ost::radixText(unit.radix));
  return false;
}

bool checkNewUnitName(const istDataset& dataset, const QString& name, QString& error) {
  if (!dataset.findUnit(name)) return ost::checkName(name, QStringLiteral("The trigger unit name"), error);
  error = QStringLiteral("The name %1 is already used by another trigger unit.").arg(ost::quoted(name));
  return false;
}

/// The texts of the expressions that use a unit, with its new name; false when one would become too long.
bool renameInTexts(const istDataset& dataset, const QStringList& users, const QString& oldName, const QString& newName,
                   QStringList& texts, QString& error) {
  for (const QString& user : users) {
    texts << ost::renameUnitInExpression(dataset.findExpression(user)->text, oldName, newName);
    if (texts.last().size() <= ost::kMaxExpressionLength) continue;
    error = QStringLiteral("Trigger expression %1 would be longer than %2 characters; choose a shorter name.")
                .arg(ost::quoted(user), QString::number(ost::kMaxExpressionLength));
    return false;
  }
  return true;
}

}  // namespace

std::vector<std::string> IstComData::getTUNameList(istDataset* dataset) {
  std::vector<std::string> names;
  if (!dataset) return names;
  names.reserve(dataset->units().size());
  for (const auto& entry : dataset->units()) names.push_back(entry->unit.name.toLatin1().toStdString());
  return names;
}

bool IstComData::isTUNameUsed(const QString& name, istDataset* dataset) {
  return getTU(name, dataset) != nullptr;
}

istTU* IstComData::getTU(const QString& name, istDataset* dataset) {
  return dataset ? dataset->findUnit(name) : nullptr;
}

bool IstComData::addTU(QString& radix, const QStringList& signalNames, QString& op, QString& value, QString& name,
                       QString& message, istDataset* dataset) {
  if (!dataset) return false;
  const ost::Core* core = d->coreOf(dataset);
  ost::TriggerUnit unit;
  unit.radix = core ? core->options.defaultRadix : ost::Radix::Bin;
  unit.name = name.isEmpty() ? dataset->freeUnitName() : name;
  unit.value = value;
  QString error;
  if (!checkNewUnitName(*dataset, unit.name, error) || !setRadix(radix, unit, error) || !setOperator(op, unit, error) ||
      !addSignalNames(signalNames, unit, error) || !checkUnit(unit, error))
    return d->fail(ToldBy::Console, error, message);
  name = unit.name;
  dataset->addUnit(std::move(unit));
  d->markChanged();
  return true;
}

bool IstComData::setTU(istTU* unit, QString& radix, const QStringList& addSignals, const QStringList& removeSignals,
                       QString& op, QString& value, QString& message, istDataset* dataset) {
  if (!unit || !dataset) return false;
  ost::TriggerUnit edited = unit->unit;
  QString error;
  const bool replaceAll = removeSignals.size() == 1 && removeSignals.first().isEmpty();
  if (replaceAll) edited.signalNames.clear();
  const auto setValue = [&] {
    if (value.isEmpty()) return convertValue(unit->unit, edited, error);
    edited.value = value;
    return true;
  };
  if (!(replaceAll || removeSignalNames(removeSignals, edited, error)) || !addSignalNames(addSignals, edited, error) ||
      !setOperator(op, edited, error) || !setRadix(radix, edited, error) || !setValue() || !checkUnit(edited, error))
    return d->fail(ToldBy::Command,
                   QStringLiteral("Trigger unit %1 is unchanged: %2").arg(ost::quoted(unit->unit.name), error),
                   message);
  const ost::TriggerUnit& now = unit->unit;
  if (edited.signalNames != now.signalNames || edited.op != now.op || edited.radix != now.radix ||
      edited.value != now.value)
    d->markChanged();
  unit->unit = edited;
  return true;
}

bool IstComData::renameTU(const QString& oldName, const QString& newName, QString& message, istDataset* dataset) {
  istTU* unit = getTU(oldName, dataset);
  if (!unit) return false;
  if (newName == oldName) return true;
  QString error;
  const QStringList users = dataset->expressionsUsing(oldName);
  QStringList texts;
  if (!checkNewUnitName(*dataset, newName, error) || !renameInTexts(*dataset, users, oldName, newName, texts, error))
    return d->fail(ToldBy::Command, error, message);
  for (int i = 0; i < users.size(); ++i) {
    ost::TriggerExpression* expression = dataset->findExpression(users[i]);
    QStringList units = expression->units;
    units.replace(units.indexOf(oldName), newName);
    dataset->setExpressionText(expression, texts[i], units);
  }
  dataset->renameUnit(unit, newName);
  if (!users.isEmpty()) message = QStringLiteral("Renamed in %1, too.\n").arg(users.join(QStringLiteral(", ")));
  d->markChanged();
  return true;
}

bool IstComData::removeTU(const QString& name, istDataset* dataset) {
  istTU* unit = getTU(name, dataset);
  if (!unit) return false;
  const QStringList users = dataset->expressionsUsing(name);
  if (!users.isEmpty()) {
    const bool one = users.size() == 1;
    return d->fail(ToldBy::Console,
                   QStringLiteral("Trigger unit %1 is not removed: %2 %3 it; change or remove %4 first (ost_te).")
                       .arg(ost::quoted(name), users.join(QStringLiteral(", ")), QLatin1String(one ? "uses" : "use"),
                            QLatin1String(one ? "that expression" : "those expressions")));
  }
  dataset->removeUnit(unit);
  d->markChanged();
  return true;
}

}  // namespace ostrel
}  // namespace mero

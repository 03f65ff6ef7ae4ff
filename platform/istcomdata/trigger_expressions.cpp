// Trigger expressions: their text, their names and the hardware settings.
#include "framework/ist_com_data.h"
#include "platform/istcomdata/service_private.h"
#include "platform/istdata/project_checks.h"
#include "platform/text/numbers.h"
#include "platform/trigger/trigger_expression.h"

namespace mero {
namespace ostrel {

namespace {

struct Needs {
  int steps = 1;
  int count = 1;
};

/// What the expression needs against what its settings give. Not refused: settings and text may come in any order, and
/// the design rules look again.
QString settingsRemark(const ost::TriggerExpression& expression, const Needs& needs) {
  QString remark;
  const auto compare = [&](const char* option, const char* what, int needed, int given) {
    if (needed > given)
      remark += QStringLiteral("WARNING: Trigger expression %1 needs %2 %3, more than its %4 of %5; set -%4 %6.\n")
                    .arg(ost::quoted(expression.name), QLatin1String(what), QString::number(needed),
                         QLatin1String(option), QString::number(given), QString::number(ost::powerOfTwoFrom(needed)));
  };
  compare("max_seq_depth", "a sequence depth of", needs.steps, expression.maxSequenceDepth);
  compare("max_event_count", "an event count of", needs.count, expression.maxEventCount);
  return remark;
}

/// Puts text and settings into `expression`, numbers of -1 meaning unchanged and 0 whatever the text needs. `remark`
/// gets what the user should know of a success.
bool setExpression(const istDataset& dataset, const QString& text, int ram, int depth, int count,
                   ost::TriggerExpression& expression, QString& remark, QString& error) {
  Needs needs;
  const auto setNumber = [&error](const char* option, int value, int needed, int largest, int& setting) {
    if (value == -1) return true;
    if (value == 0) value = int(ost::powerOfTwoFrom(needed));
    if (!ost::isPowerOfTwo(value, largest)) {
      error = QStringLiteral("%1 must be a power of two from 1 to %2, not %3.")
                  .arg(QLatin1String(option))
                  .arg(largest)
                  .arg(value);
      return false;
    }
    setting = value;
    return true;
  };
  if (!ost::setExpressionText(dataset, text, expression, needs.steps, needs.count, error) ||
      !setNumber("max_seq_depth", depth, needs.steps, ost::kMaxSequenceDepth, expression.maxSequenceDepth) ||
      !setNumber("max_event_count", count, needs.count, ost::kMaxEventCount, expression.maxEventCount)) {
    error = QStringLiteral("Trigger expression %1: %2").arg(ost::quoted(expression.name), error);
    return false;
  }
  if (ram != -1) expression.ram = ost::ExpressionRam(ram != 0);
  remark = settingsRemark(expression, needs);
  return true;
}

bool checkNewExpressionName(const istDataset& dataset, const QString& name, QString& error) {
  if (!dataset.findExpression(name)) return ost::checkName(name, QStringLiteral("The trigger expression name"), error);
  error = QStringLiteral("The name %1 is already used by another trigger expression.").arg(ost::quoted(name));
  return false;
}

}  // namespace

std::vector<std::string> IstComData::getTENameList(istDataset* dataset) {
  std::vector<std::string> names;
  if (!dataset) return names;
  names.reserve(dataset->expressions().size());
  for (const auto& entry : dataset->expressions()) names.push_back(entry->name.toLatin1().toStdString());
  return names;
}

bool IstComData::isTENameUsed(const QString& name, istDataset* dataset) {
  return dataset && dataset->findExpression(name);
}

bool IstComData::addTE(QString& name, const QString& expression, int ram, int maxSequenceDepth, int maxEventCount,
                       QString& message, istDataset* dataset) {
  if (!dataset) return false;
  ost::TriggerExpression added;
  added.name = name.isEmpty() ? dataset->freeExpressionName() : name;
  QString error;
  // There is no setting to leave unchanged here.
  if (!checkNewExpressionName(*dataset, added.name, error) ||
      !setExpression(*dataset, expression, ram == 1, qMax(0, maxSequenceDepth), qMax(0, maxEventCount), added, message,
                     error))
    return d->fail(ToldBy::Command, error, message);
  name = added.name;
  dataset->addExpression(std::move(added));
  d->markChanged();
  return true;
}

bool IstComData::setTE(QString& name, const QString& expression, int ram, int maxSequenceDepth, int maxEventCount,
                       QString& message, istDataset* dataset) {
  ost::TriggerExpression* stored = dataset ? dataset->findExpression(name) : nullptr;
  if (!stored) return false;
  ost::TriggerExpression edited = *stored;
  QString error;
  if (!setExpression(*dataset, expression.isEmpty() ? stored->text : expression, ram, maxSequenceDepth, maxEventCount,
                     edited, message, error))
    return d->fail(ToldBy::Command, error, message);
  if (edited.text != stored->text || edited.ram != stored->ram || edited.maxSequenceDepth != stored->maxSequenceDepth ||
      edited.maxEventCount != stored->maxEventCount)
    d->markChanged();
  dataset->setExpressionText(stored, edited.text, edited.units);
  stored->ram = edited.ram;
  stored->maxSequenceDepth = edited.maxSequenceDepth;
  stored->maxEventCount = edited.maxEventCount;
  return true;
}

bool IstComData::renameTE(const QString& oldName, const QString& newName, QString& message, istDataset* dataset) {
  ost::TriggerExpression* expression = dataset ? dataset->findExpression(oldName) : nullptr;
  if (!expression) return false;
  if (newName == oldName) return true;
  QString error;
  if (!checkNewExpressionName(*dataset, newName, error)) return d->fail(ToldBy::Command, error, message);
  dataset->renameExpression(expression, newName);
  d->markChanged();
  return true;
}

bool IstComData::removeTE(const QString& name, istDataset* dataset) {
  ost::TriggerExpression* expression = dataset ? dataset->findExpression(name) : nullptr;
  if (!expression) return false;
  dataset->removeExpression(expression);
  d->markChanged();
  return true;
}

}  // namespace ostrel
}  // namespace mero

// Which cores, and what the assignments of the command line change in them.
#include "platform/reader/run_options.h"

#include <algorithm>

#include "platform/reader/option_values.h"

namespace ost {
namespace {

/// "UNIT=WORD" or "CORE/UNIT=WORD".
struct Assignment {
  QString core, name, word;
};

Assignment assignmentOf(const QString& text) {
  const int equals = text.indexOf(QLatin1Char('='));
  const QString place = text.left(qMax(0, equals));
  const int slash = place.indexOf(QLatin1Char('/'));
  // An empty word must not become a null text.
  return {place.left(qMax(0, slash)), place.mid(slash + 1), QLatin1String("") + text.mid(equals + 1)};
}

bool readAssignment(const QString& option, const QString& text, bool needsCore, Assignment& assignment,
                    QString& error) {
  assignment = assignmentOf(text);
  if (assignment.name.isEmpty())
    return wrongValue(option, text, option == QLatin1String("-te") ? "NAME=EXPRESSION" : "UNIT=WORD", error);
  return !needsCore || !assignment.core.isEmpty() ||
         wrongValue(option, text, "CORE/NAME=WORD, as \"-all\" is given", error);
}

}  // namespace

QVector<int> chooseCores(const InsertPlan& plan, const CaptureOptions& options, QString& error) {
  QStringList names;
  QVector<int> all, named;
  for (int i = 0; i < plan.cores.size(); ++i) {
    if (plan.cores[i].name == options.core) named += i;
    all += i;
    names += plan.cores[i].name;
  }
  if (!checkPeriods(names, options, error)) return {};
  const QVector<int> chosen =
      named.isEmpty() && options.core.isEmpty() && (all.size() == 1 || options.allCores) ? all : named;
  for (const auto& change : options.changes) {
    const QString core = assignmentOf(change.second).core;
    if (chosen.isEmpty() || core.isEmpty() || chosen.contains(names.indexOf(core))) continue;
    error = QStringLiteral("\"%1\" for \"%2\" is meant for the core \"%3\", which is not captured.")
                .arg(change.second, change.first, core);
    return {};
  }
  if (!chosen.isEmpty()) return chosen;
  if (all.isEmpty()) {
    error = QStringLiteral("The design has no logic-analyzer core, so there is nothing to capture.");
    return {};
  }
  const QString list = names.join(QLatin1String(", "));
  error = options.core.isEmpty()
              ? QStringLiteral("The design has several cores; choose one of %1 with -core NAME, or -all.").arg(list)
              : QStringLiteral("There is no core \"%1\"; choose one of %2.").arg(options.core, list);
  return {};
}

bool checkPeriods(const QStringList& names, const CaptureOptions& options, QString& error) {
  for (const QString& core : options.vcdStyle.corePeriods.keys()) {
    if (names.contains(core)) continue;
    error = QStringLiteral("\"-period\" is for the core \"%1\", which is none of %2.")
                .arg(core, names.join(QLatin1String(", ")));
    return false;
  }
  return true;
}

bool applyRunOptions(const CaptureOptions& options, RunSettings& settings, QString& error) {
  // An operator and a value given for one unit may fit only together.
  struct Change {
    QString unit, operatorWord, value;
  };
  QVector<Change> changes;
  for (const auto& [option, text] : options.changes) {
    Assignment one;
    if (!readAssignment(option, text, options.allCores, one, error)) return false;
    if (!one.core.isEmpty() && one.core != settings.core().name) continue;
    if (option == QLatin1String("-te")) {
      if (!settings.setExpression(one.name, one.word, error)) return false;
      continue;
    }
    auto change = std::find_if(changes.begin(), changes.end(), [&](const Change& old) { return old.unit == one.name; });
    if (change == changes.end()) change = changes.insert(changes.end(), {one.name, QString(), QString()});
    (option == QLatin1String("-op") ? change->operatorWord : change->value) = one.word;
  }
  for (const Change& change : changes)
    if (!settings.setUnit(change.unit, change.operatorWord, change.value, error)) return false;
  return (options.position.isEmpty() || settings.setPosition(options.position, error)) &&
         (options.expressions.isEmpty() || settings.chooseExpressions(options.expressions, error)) &&
         (options.eventCount == 0 || settings.setEventCount(options.eventCount, error)) &&
         (options.windows == 0 || settings.setWindows(options.windows, error)) &&
         (!options.now || settings.triggerNow(error));
}

}  // namespace ost

// Status fields in the order of docs/debug-core.md, section 3.
#include "platform/reader/core_status.h"

#include "platform/plan/core_layout.h"

namespace ost {
namespace {

QString clockStoppedText(const PlanCore& core) {
  return QStringLiteral("The sample clock \"%1\" is not running (or is far slower than TCK).")
      .arg(core.sampleClock.name);
}

/// "TU1, TU2": the units that a step's truth table depends on.
QString unitsOfStep(const PlanCore& core, const PlanExpression& expression, int step) {
  const QByteArray table = step < expression.steps.size() ? expression.steps[step].truthTable : QByteArray();
  QStringList names;
  for (int unit = 0; unit < expression.units.size(); ++unit) {
    bool matters = false;
    for (int row = 0; row < table.size() && !matters; ++row) matters = table[row] != table[row ^ (1 << unit)];
    if (matters) names += core.units[expression.units[unit]].name;
  }
  return names.isEmpty() ? QStringLiteral("no unit") : names.join(QLatin1String(", "));
}

QString stepText(const PlanCore& core, const PlanExpression& expression, int step) {
  const int count = step < expression.steps.size() ? expression.steps[step].count : 1;
  return QStringLiteral("Expression \"%1\" (%2) waits in step %3 of %4%5; it depends on %6.")
      .arg(expression.name, expression.text, QString::number(step + 1), QString::number(expression.steps.size()),
           count > 1 ? QStringLiteral(", which must hold %1 times").arg(count) : QString(),
           unitsOfStep(core, expression, step));
}

}  // namespace

CoreStatus parseStatus(const PlanCore& core, const HubReply& reply) {
  const CoreLayout layout(core);
  int next = 0;
  auto take = [&](int bits) {
    next += bits;
    return static_cast<int>(bitsNumber(reply.payload, next - bits, bits));
  };
  CoreStatus status;
  status.flags = reply.flags;
  status.tag = take(8);
  status.running = take(1);
  status.searching = take(1);
  status.triggered = take(1);
  status.triggerEnabled = take(1);
  status.sampled = take(1);
  status.window = take(layout.windowBits);
  if (core.windows == 1) status.oldest = take(layout.positionBits);
  for (const ExpressionLayout& expression : layout.expressions) status.steps += take(expression.stepBits);
  status.events = take(layout.eventBits);
  return status;
}

QStringList explainWaiting(const RunSettings& settings, const CoreStatus& status) {
  const PlanCore& core = settings.core();
  if (!status.flags.armed) return {QStringLiteral("The core is not armed.")};
  if (status.flags.done) return {QStringLiteral("The capture is complete.")};
  if (!status.flags.fresh) return {clockStoppedText(core)};
  QStringList lines;
  if (settings.windows() > 1)
    lines += QStringLiteral("%1 of %2 windows are complete.").arg(status.window).arg(settings.windows());
  if (!status.running) return lines << QStringLiteral("The core has just been armed.");
  if (!status.sampled)
    return lines << (core.hasSampleEnable
                         ? QStringLiteral("No sample since arming: the sample enable \"%1\" is inactive (active %2).")
                               .arg(core.sampleEnable.name,
                                    core.sampleEnableActiveLow ? QStringLiteral("low") : QStringLiteral("high"))
                         : QStringLiteral("No sample since arming."));
  if (status.triggered)
    return lines << QStringLiteral("The trigger has occurred; the samples after it are being stored.");
  if (!status.searching)
    return lines << QStringLiteral("The %1 samples before the trigger are not stored yet.").arg(settings.position());
  if (core.hasTriggerEnable && !status.triggerEnabled)
    lines +=
        QStringLiteral("The trigger enable \"%1\" is inactive (active %2).")
            .arg(core.triggerEnable.name, core.triggerEnableActiveLow ? QStringLiteral("low") : QStringLiteral("high"));
  for (int i = 0; i < core.expressions.size(); ++i)
    if (settings.isEnabled(i)) lines += stepText(core, core.expressions[i], status.steps[i]);
  if (settings.eventCount() > 1)
    lines += QStringLiteral("%1 of %2 events have been counted.").arg(status.events).arg(settings.eventCount());
  return lines;
}

QString progressText(const RunSettings& settings, const CoreStatus& status) {
  const PlanCore& core = settings.core();
  QStringList parts(QStringLiteral("%1: armed").arg(core.name));
  if (!status.flags.fresh) {
    parts += QStringLiteral("the sample clock stands still");
  } else if (!status.running || !status.sampled) {
    parts += QStringLiteral("no sample yet");
  } else if (status.triggered) {
    parts += QStringLiteral("triggered");
  } else if (!status.searching) {
    parts += QStringLiteral("prefill of %1 samples under way").arg(settings.position());
  } else {
    for (int i = 0; i < core.expressions.size(); ++i)
      if (settings.isEnabled(i))
        parts += QStringLiteral("step %1 of %2 of %3")
                     .arg(status.steps[i] + 1)
                     .arg(core.expressions[i].steps.size())
                     .arg(core.expressions[i].name);
    if (settings.eventCount() > 1)
      parts += QStringLiteral("%1 of %2 events").arg(status.events).arg(settings.eventCount());
  }
  if (settings.windows() > 1) parts += QStringLiteral("window %1 of %2").arg(status.window + 1).arg(settings.windows());
  return parts.join(QLatin1String(", "));
}

QString statusSummary(const PlanCore& core, const CoreStatus& status) {
  if (!status.flags.armed && !status.flags.done)
    return status.flags.ready ? QStringLiteral("idle") : QStringLiteral("stopping");
  if (status.flags.done) return QStringLiteral("done");
  if (!status.flags.fresh) return QStringLiteral("armed; ") + clockStoppedText(core);
  if (status.triggered) return QStringLiteral("armed, triggered, filling window %1").arg(status.window + 1);
  if (status.searching) return QStringLiteral("armed, waiting for the trigger of window %1").arg(status.window + 1);
  return QStringLiteral("armed, filling the samples before the trigger of window %1").arg(status.window + 1);
}

}  // namespace ost

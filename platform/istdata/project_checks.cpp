// Checks shared by typed words and project files.
#include "platform/istdata/project_checks.h"

#include <algorithm>

#include "platform/text/byte_text.h"
#include "platform/text/near_names.h"
#include "platform/trigger/trigger_expression.h"
#include "platform/trigger/unit_value.h"

namespace ost {

bool checkNetName(const QString& name, QString& error) {
  bool printable = true, ascii = true;
  for (const QChar c : name) {
    printable &= c >= QLatin1Char(' ') && c != QChar(0x7f);
    ascii &= c < QChar(0x80);
  }
  if (name.isEmpty())
    error = QStringLiteral("The net name is empty.");
  else if (name.size() > kMaxNetNameLength)
    error = QStringLiteral("The net name %1 has more than %2 characters.")
                .arg(quoted(name), QString::number(kMaxNetNameLength));
  else if (!printable || (!ascii && textFromUnicode(unicodeFromText(name)) != name))
    error = QStringLiteral("The net name %1 holds unprintable characters.").arg(quoted(name));
  return error.isEmpty();
}

bool checkUnitDigits(const TriggerUnit& unit, QString& error) {
  if (unit.value.isEmpty()) return true;
  QByteArray value, mask;
  const int width = unit.op == Operator::SerialCompare ? 1 : kMaxUnitWidth;
  return mayNameValue(unit.op, unit.value) ||
         parseUnitValue(unit.op, unit.radix, unit.value, width, value, mask, error);
}

bool setExpressionText(const mero::ostrel::istDataset& dataset, const QString& text, TriggerExpression& expression,
                       int& steps, int& largestCount, QString& error) {
  steps = largestCount = 1;
  ParsedExpression parsed;
  if (!text.trimmed().isEmpty()) {
    if (!parseTriggerExpression(text, parsed, error)) return false;
    for (const QString& unit : parsed.units) {
      if (dataset.findUnit(unit)) continue;
      NearestNames near(unit);
      for (const auto& known : dataset.units()) near.offer(known->unit.name);
      error = QStringLiteral("There is no trigger unit %1 in this core%2; add it first (ost_tu add).")
                  .arg(quoted(unit), near.hint());
      return false;
    }
    steps = parsed.steps.size();
    for (const ParsedStep& step : parsed.steps) largestCount = std::max(largestCount, step.count);
  }
  expression.text = text;
  expression.units = parsed.units;
  return true;
}

QStringList fitToBufferDepth(Core& core) {
  QStringList remarks;
  CoreOptions& options = core.options;
  const int depth = options.bufferDepth;
  const auto fit = [&](const char* option, bool inUse, int& value, int fitting) {
    if (value != fitting && inUse)
      remarks << QStringLiteral("%1 is now %2 to fit the buffer depth %3.")
                     .arg(QLatin1String(option))
                     .arg(fitting)
                     .arg(depth);
    value = fitting;
  };
  const bool multiple = options.captureMode == CaptureMode::Multiple;
  fit("TimestampBits", options.timestamp, options.timestampBits,
      qBound(Core::getMinTimestampBitsByDepth(depth), options.timestampBits, Core::getMaxTimestampBitsByDepth(depth)));
  fit("MinimumSamplesPerTrigger", multiple, core.samplesPerTrigger, std::min(core.samplesPerTrigger, depth));
  fit("NumberofTriggers", multiple, options.triggerCount,
      std::min(options.triggerCount, depth / core.samplesPerTrigger));
  return remarks;
}

}  // namespace ost

// Checks of one core's sampling: clock, enables, traced signals and capture settings; and the texts that all share.
#include "platform/rules/core_check.h"

#include "platform/istdata/trace_tree.h"
#include "platform/plan/insert_plan.h"
#include "platform/text/near_names.h"

namespace ost {

QString counted(qint64 count, const char* noun) {
  return QStringLiteral("%1 %2%3").arg(count).arg(QLatin1String(noun), count == 1 ? QString() : QStringLiteral("s"));
}

void FindingList::add(DesignRule rule, const QString& object, const QString& text, const Fills& fills) {
  const RuleRow& row = ruleRow(rule);
  Finding finding;
  finding.number = int(rule);
  finding.severity = row.severity;
  const bool shown = isShown(rule);
  ++counts_[int(rule)];
  if (!shown) {  // only counted, and there may be a great many
    findings_.append(finding);
    return;
  }
  finding.object = object;
  finding.text = text.endsWith(QLatin1Char('.')) ? text.chopped(1) : text;  // the way out follows on the line
  finding.wayOut = QLatin1String(row.wayOut);
  for (const auto& fill : fills) finding.wayOut.replace(fill.first, fill.second);
  findings_.append(finding);
}

CoreCheck::CoreCheck(const ResolvedCore& resolved, const Design& design, FindingList& findings, Pulse& pulse)
    : resolved_(resolved), core_(*resolved.core), design_(design), findings_(findings), pulse_(pulse) {
  for (const ResolvedSignal& signal : resolved.traced) tracedBits_ += signal.width == 1;
}

QString CoreCheck::object(const QString& part) const {
  const QString core = QLatin1String("core ") + core_.name;
  return part.isEmpty() ? core : core + QLatin1String(", ") + part;
}

void CoreCheck::report(DesignRule rule, const QString& part, const QString& text,
                       const FindingList::Fills& fills) const {
  FindingList::Fills all = fills;
  all.append({QStringLiteral("<core>"), core_.name});
  findings_.add(rule, object(part), text, all);
}

void CoreCheck::reportVanished(DesignRule rule, const QString& part, const QString& title, const QString& name,
                               const FindingList::Fills& fills, const char* verb) const {
  QString text = QStringLiteral("%1 \"%2\" %3 not in the design").arg(title, name, QLatin1String(verb));
  if (findings_.isShown(rule)) text += nearHint(design_.nearest(name));
  report(rule, part, text, fills);
}

void CoreCheck::checkSampling() const {
  checkSampleClock();
  checkEnable(core_.options.sampleEnable, resolved_.sampleEnable, "sample enable", "SampleEnable");
  checkEnable(core_.options.triggerEnable, resolved_.triggerEnable, "trigger enable", "TriggerEnable");
  checkTracedSignals();
  checkCaptureSettings();
}

void CoreCheck::checkSampleClock() const {
  const ResolvedName& clock = resolved_.sampleClock;
  if (clock.name.isEmpty())
    report(DesignRule::NoSampleClock, QString(), QStringLiteral("no sample clock is set"));
  else if (clock.bits.isEmpty())
    reportVanished(DesignRule::SampleClockVanished, QString(), QStringLiteral("sample clock"), clock.name);
  else if (clock.bits.size() != 1)
    report(DesignRule::SampleClockWide, QString(),
           QStringLiteral("sample clock \"%1\" has %2").arg(clock.name, counted(clock.bits.size(), "bit")),
           {{QStringLiteral("<bit>"), clock.bits.last().name}});
}

void CoreCheck::checkEnable(bool on, const ResolvedName& signal, const char* title, const char* option) const {
  if (!on) return;
  const QString what = QLatin1String(title);
  const FindingList::Fills fills = {{QStringLiteral("<enable>"), QLatin1String(option)}};
  if (signal.name.isEmpty())
    report(DesignRule::EnableWithoutSignal, what, what + QLatin1String(" is on but has no signal"), fills);
  else if (signal.bits.isEmpty())
    reportVanished(DesignRule::EnableSignalVanished, what, QStringLiteral("signal"), signal.name, fills);
  else if (signal.bits.size() != 1)
    report(DesignRule::EnableSignalWide, what,
           QStringLiteral("signal \"%1\" has %2").arg(signal.name, counted(signal.bits.size(), "bit")),
           fills + FindingList::Fills{{QStringLiteral("<bit>"), signal.bits.last().name}});
}

void CoreCheck::checkTracedSignals() const {
  const int count = core_.trace->signalCount();
  if (count > kMaxPlanBits)
    return report(DesignRule::TooManySignals, QString(),
                  QStringLiteral("%1 bits are traced, at most %2 can be read").arg(count).arg(kMaxPlanBits));
  if (resolved_.traced.empty()) report(DesignRule::NothingTraced, QString(), QStringLiteral("nothing is traced"));
  for (size_t i = 0; i < resolved_.traced.size(); ++i) {
    const ResolvedSignal& signal = resolved_.traced[i];
    if (signal.width == 1) continue;
    if (!pulse_.beat()) return;
    const QString name = signal.node->displayName();
    const FindingList::Fills fills = {{QStringLiteral("<signal>"), name}};
    if (signal.width == 0)
      i = reportVanishedVector(i);
    else
      report(DesignRule::TracedSignalVanished, QString(),
             QStringLiteral("traced signal \"%1\" has become %2 wide").arg(name, counted(signal.width, "bit")), fills);
  }
}

/// One finding for the bits of a net that stand side by side from `first` on; returns the last of them.
size_t CoreCheck::reportVanishedVector(size_t first) const {
  const auto netOf = [](const QString& bit) {
    const int bracket = bit.endsWith(QLatin1Char(']')) ? bit.lastIndexOf(QLatin1Char('[')) : -1;
    return bit.left(bracket);
  };
  QStringList bits{resolved_.traced[first].node->displayName()};
  const QString net = netOf(bits.first());
  size_t next = first + 1;
  for (; next < resolved_.traced.size() && resolved_.traced[next].width == 0; ++next) {
    const QString bit = resolved_.traced[next].node->displayName();
    if (bit == net || netOf(bit) != net) break;
    bits.append(bit);
  }
  constexpr int kNamedBits = 8;
  QStringList named = bits.mid(0, kNamedBits);
  if (bits.size() > kNamedBits) named.append(QStringLiteral("..."));
  const FindingList::Fills fills = {{QStringLiteral("<signal>"), named.join(QLatin1Char(' '))}};
  const bool one = bits.size() == 1;
  reportVanished(
      DesignRule::TracedSignalVanished, QString(),
      one ? QStringLiteral("traced signal") : counted(bits.size(), "bit") + QLatin1String(" of traced signal"),
      one ? bits.first() : net, fills, one ? "is" : "are");
  return next - 1;
}

void CoreCheck::checkCaptureSettings() const {
  using mero::ostrel::istCore;
  const CoreOptions& options = core_.options;
  const int depth = options.bufferDepth;
  // Changing the depth later can leave the numbers that were checked against it behind.
  const auto misfit = [&](const char* option, const QString& text) {
    report(DesignRule::CaptureSettings, QString(), text + QStringLiteral(" with a buffer depth of %1").arg(depth),
           {{QStringLiteral("<option>"), QLatin1String(option)}});
  };
  const int fewest = istCore::getMinTimestampBitsByDepth(depth), most = istCore::getMaxTimestampBitsByDepth(depth);
  if (options.timestamp && (options.timestampBits < fewest || options.timestampBits > most))
    misfit("TimestampBits", QStringLiteral("a timestamp of %1 is out of range (%2 to %3)")
                                .arg(counted(options.timestampBits, "bit"))
                                .arg(fewest)
                                .arg(most));
  if (options.captureMode == CaptureMode::Single) return;
  if (!istCore::isValidMinSamplePerTrigsValueByDepth(depth, core_.samplesPerTrigger))
    misfit("MinimumSamplesPerTrigger",
           QStringLiteral("%1 per trigger cannot be kept").arg(counted(core_.samplesPerTrigger, "sample")));
  else if (!istCore::isValidNumberOfTrigsValueByDepth(depth, core_.samplesPerTrigger, options.triggerCount))
    misfit("NumberofTriggers",
           QStringLiteral("%1 of %2 cannot be kept")
               .arg(counted(options.triggerCount, "trigger"), counted(core_.samplesPerTrigger, "sample")));
}

}  // namespace ost

// Checks of one core's sampling: clock, enables, traced signals and capture settings; and the texts that all share.
#include "platform/rules/core_check.h"

#include "platform/istdata/trace_tree.h"
#include "platform/text/near_names.h"

namespace ost {

namespace {

/// Calls `visit` for every captured bit, in order, until it returns false. References stand for bits that are captured
/// already.
template <typename Visit>
bool forEachSignal(const QList<TraceNode*>& nodes, const Visit& visit) {
  for (const TraceNode* node : nodes) {
    if (node->kind == mero::ostrel::TRACE_NODE_SIGNAL && !visit(*node)) return false;
    if (node->kind == mero::ostrel::TRACE_NODE_BUS && !forEachSignal(node->children, visit)) return false;
  }
  return true;
}

}  // namespace

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

void ResolvedBits::append(const NetSelection& selection) {
  // Bits of one net stand side by side, and share the words that are the same.
  const bool same = !bits.isEmpty() && bits.last().net == selection.net;
  const QString net = same ? bits.last().net : selection.net;
  const bool sameInstance = !bits.isEmpty() && bits.last().instancePath == selection.instancePath;
  const QString instance = sameInstance ? bits.last().instancePath : selection.instancePath;
  for (int i = 0; i < selection.bits.size(); ++i)
    bits.append({instance, net, selection.bits.at(i), selection.bitNames.at(i)});
}

CoreCheck::CoreCheck(const Core& core, const Design& design, FindingList& findings, Pulse& pulse)
    : core_(core), design_(design), findings_(findings), pulse_(pulse) {
  traced_.object = object();
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
                               const FindingList::Fills& fills) const {
  QString text = title + QLatin1String(" \"") + name + QLatin1String("\" is not in the design");
  if (findings_.isShown(rule)) text += nearHint(design_.nearest(name));
  report(rule, part, text, fills);
}

void CoreCheck::checkSampling() {
  checkSampleClock();
  checkEnable(core_.options.sampleEnable, core_.options.sampleEnableSignal, "sample enable", "SampleEnable");
  checkEnable(core_.options.triggerEnable, core_.options.triggerEnableSignal, "trigger enable", "TriggerEnable");
  checkTracedSignals();
  checkCaptureSettings();
}

void CoreCheck::checkSampleClock() {
  const QString& name = core_.options.sampleClock;
  QString error;
  if (name.isEmpty()) {
    report(DesignRule::NoSampleClock, QString(), QStringLiteral("no sample clock is set"));
  } else if (!design_.resolve(name, clock_, error)) {
    reportVanished(DesignRule::SampleClockVanished, QString(), QStringLiteral("sample clock"), name);
  } else if (clock_.bits.size() != 1) {
    report(DesignRule::SampleClockWide, QString(),
           QStringLiteral("sample clock \"%1\" has %2").arg(name, counted(clock_.bits.size(), "bit")),
           {{QStringLiteral("<bit>"), clock_.bitNames.value(clock_.bitNames.size() - 1)}});
  } else {
    hasClock_ = true;
  }
}

void CoreCheck::checkEnable(bool on, const QString& signal, const char* title, const char* option) {
  if (!on) return;
  const QString what = QLatin1String(title);
  const FindingList::Fills fills = {{QStringLiteral("<enable>"), QLatin1String(option)}};
  NetSelection selection;
  QString error;
  if (signal.isEmpty()) {
    report(DesignRule::EnableWithoutSignal, what, what + QLatin1String(" is on but has no signal"), fills);
  } else if (!design_.resolve(signal, selection, error)) {
    reportVanished(DesignRule::EnableSignalVanished, what, QStringLiteral("signal"), signal, fills);
  } else if (selection.bits.size() != 1) {
    report(
        DesignRule::EnableSignalWide, what,
        QStringLiteral("signal \"%1\" has %2").arg(signal, counted(selection.bits.size(), "bit")),
        fills + FindingList::Fills{{QStringLiteral("<bit>"), selection.bitNames.value(selection.bitNames.size() - 1)}});
  } else {
    watched_.append({object(what), {}});
    watched_.last().append(selection);
  }
}

void CoreCheck::checkTracedSignals() {
  const int count = core_.trace->signalCount();
  if (count > kMaxPlanBits)
    return report(DesignRule::TooManySignals, QString(),
                  QStringLiteral("%1 bits are traced, at most %2 can be read").arg(count).arg(kMaxPlanBits));
  bool any = false;
  forEachSignal(core_.trace->nodes, [&](const TraceNode& node) {
    any = true;
    const QString name = node.displayName();
    const FindingList::Fills fills = {{QStringLiteral("<signal>"), name}};
    NetSelection selection;
    QString error;
    if (!design_.exists(name) || !design_.resolve(name, selection, error))
      reportVanished(DesignRule::TracedSignalVanished, QString(), QStringLiteral("traced signal"), name, fills);
    else if (selection.bits.size() != 1)
      report(DesignRule::TracedSignalVanished, QString(),
             QStringLiteral("traced signal \"%1\" has become %2 wide").arg(name, counted(selection.bits.size(), "bit")),
             fills);
    else
      traced_.append(selection);
    return pulse_.beat();
  });
  if (!any) report(DesignRule::NothingTraced, QString(), QStringLiteral("nothing is traced"));
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
           QStringLiteral("%1 per trigger do not go").arg(counted(core_.samplesPerTrigger, "sample")));
  else if (!istCore::isValidNumberOfTrigsValueByDepth(depth, core_.samplesPerTrigger, options.triggerCount))
    misfit("NumberofTriggers",
           QStringLiteral("%1 of %2 do not go")
               .arg(counted(options.triggerCount, "trigger"), counted(core_.samplesPerTrigger, "sample")));
}

}  // namespace ost

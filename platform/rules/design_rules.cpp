// Runs the checks over the whole project and writes the report.
#include "platform/rules/design_rules.h"

#include <algorithm>

#include "platform/plan/planner.h"
#include "platform/rules/core_check.h"
#include "platform/rules/serdes_checks.h"
#include "platform/rules/wishbone_target.h"

namespace ost {

namespace {

void checkProject(const mero::ostrel::istProject& project, size_t enabled, FindingList& findings) {
  const QString object = QStringLiteral("project");
  const bool hasOther = project.wishbone || project.serdes;
  if (project.cores.empty() && !hasOther)
    findings.add(DesignRule::NoCoreEnabled, object, QStringLiteral("it has no core"));
  else if (enabled == 0 && !project.cores.empty())
    findings.add(DesignRule::NoCoreEnabled, object, QStringLiteral("none of its cores is enabled"));
  // The Wishbone master and the serdes core have numbers on the hub, too.
  const size_t numbers = enabled + (project.wishbone ? 1 : 0) + (project.serdes ? 1 : 0);
  if (numbers > size_t(kMaxPlanCores))
    findings.add(DesignRule::TooManyCores, object,
                 QStringLiteral("%1 of its cores are enabled, at most %2 can be read").arg(numbers).arg(kMaxPlanCores));
}

/// The master as the project has it; connected, with the slave that the design marks for it.
std::optional<PlanWishbone> checkWishbone(const mero::ostrel::istProject& project, const Netlist* netlist,
                                          FindingList& findings) {
  if (!project.wishbone) return {};
  PlanWishbone wishbone;
  wishbone.isBigEndian = project.wishboneEndian == mero::ostrel::ENDIAN_BIG;
  if (!project.wishboneConnected || !netlist) return wishbone;
  const WishboneFault fault = findWishboneSlave(netlist->bits(), wishbone);
  constexpr DesignRule kRules[] = {DesignRule::WishboneNoSlave, DesignRule::WishboneNoSlave,
                                   DesignRule::WishboneSeveralSlaves, DesignRule::WishbonePorts,
                                   DesignRule::WishboneClock};
  if (fault.kind) findings.add(kRules[fault.kind], QStringLiteral("Wishbone master"), fault.text);
  return wishbone;
}

/// What the top module has of that name: "a net", "an instance", or empty.
QString thingInTop(const Design& design, const QString& name) {
  if (design.exists(name)) return QStringLiteral("a net or port");
  return design.hasInstance(name) ? QStringLiteral("an instance") : QString();
}

void checkTriggerOutputs(const std::vector<const Core*>& cores, const Design& design, FindingList& findings) {
  QHash<QString, QString> coreOfName;
  for (const Core* core : cores) {
    if (!core->options.triggerOut) continue;
    const QString object = QLatin1String("core ") + core->name + QLatin1String(", trigger output");
    const QString& name = core->options.triggerOutName;
    const FindingList::Fills fills = {{QStringLiteral("<core>"), core->name}};
    if (mero::ostrel::istCore::isValidTriggerOutNetName(name) != 0) {
      findings.add(
          DesignRule::TriggerOutName, object,
          name.isEmpty() ? QStringLiteral("it has no name") : QStringLiteral("\"%1\" is not a usable name").arg(name),
          fills);
      continue;
    }
    QStringList added{name};
    if (core->options.triggerOutType == TriggerOutType::Both) added.append(name + QLatin1String(kTriggerOutNetSuffix));
    for (const QString& word : added) {
      const QString thing = thingInTop(design, word);
      if (!thing.isEmpty())
        findings.add(DesignRule::TriggerOutNameInDesign, object,
                     QStringLiteral("module %1 has %2 \"%3\" already").arg(design.topModule(), thing, word), fills);
      if (coreOfName.contains(word))
        findings.add(
            DesignRule::TriggerOutNameTwice, object,
            QStringLiteral("\"%1\" is the trigger output of core %2 already").arg(word, coreOfName.value(word)), fills);
      else
        coreOfName.insert(word, core->name);
    }
  }
}

QString severityWord(Finding::Severity severity) {
  return severity == Finding::Error ? QStringLiteral("error") : QStringLiteral("warning");
}

}  // namespace

void checkPlan(const InsertPlan& plan, FindingList& findings) {
  qint64 bits = 0, places = 0;
  for (const PlanCore& core : plan.cores) {
    bits += core.probeBits.size() + core.triggerBits.size();
    for (const PlanProbe& probe : core.probes) places += probe.positions.size() + probe.names.size();
    for (const PlanUnit& unit : core.units) places += unit.inputs.size() + unit.names.size();
    for (const PlanExpression& expression : core.expressions) places += expression.units.size();
    if (core.readSampleBits() > kMaxPlanSampleBits)
      findings.add(DesignRule::TooManySamples, QLatin1String("core ") + core.name,
                   QStringLiteral("its samples have %1 bits, at most %2 can be read")
                       .arg(core.readSampleBits())
                       .arg(kMaxPlanSampleBits),
                   {{QStringLiteral("<core>"), core.name}});
  }
  const auto limit = [&findings](qint64 count, const char* what, qint64 most) {
    if (count > most)
      findings.add(
          DesignRule::TooManyNets, QStringLiteral("project"),
          QStringLiteral("%1 %2, at most %3 can be read").arg(QString::number(count), QLatin1String(what)).arg(most));
  };
  limit(bits, "bits are traced or compared", kMaxPlanBits);
  limit(places, "places and values of probes, units and expressions are taken", kMaxPlanIndexes);
}

DesignCheck checkDesignRules(const mero::ostrel::istProject& project, const Design& design, const Netlist* netlist,
                             const std::function<bool()>& idle) {
  std::vector<const Core*> enabled;
  for (const auto& core : project.cores)
    if (core->enabled) enabled.push_back(core.get());

  FindingList findings;
  Pulse pulse(idle);
  checkProject(project, enabled.size(), findings);
  checkTriggerOutputs(enabled, design, findings);
  if (project.serdes) checkSerdes(*project.serdes, design, netlist, findings);
  const std::optional<PlanWishbone> wishbone = checkWishbone(project, netlist, findings);
  std::vector<ResolvedCore> cores;
  cores.reserve(enabled.size());
  qint64 totalBits = 0;
  for (const Core* core : enabled) {
    cores.push_back(resolveCore(*core, design, [&pulse] { return pulse.beat(); }));
    if (!pulse.beat()) break;
    CoreCheck check(cores.back(), design, findings, pulse);
    check.checkSampling();
    check.checkUnits();
    check.checkExpressions();
    check.checkMemory();
    if (netlist) {
      check.checkNets(*netlist);
      findForeignEnables(*netlist, cores.back());
    }
    totalBits += check.bufferBits();
  }
  if (totalBits > kMemoryBudgetBits)
    findings.add(DesignRule::MemoryTotal, QStringLiteral("project"),
                 QStringLiteral("the buffers of %1 take %2 bits (depth x width)")
                     .arg(counted(qint64(enabled.size()), "core"))
                     .arg(totalBits));

  DesignCheck result;
  InsertPlan plan;
  const bool planned = pulse.beat() && !hasErrors(findings.findings()) &&
                       planInsertion(project, design, cores, wishbone, plan, result.fault);
  if (planned) checkPlan(plan, findings);
  result.findings = findings.findings();
  if (planned && !hasErrors(result.findings)) result.plan = std::make_shared<const InsertPlan>(std::move(plan));
  return result;
}

QString designRuleReport(const QList<Finding>& findings) {
  QList<const Finding*> ordered;
  for (const Finding& finding : findings) ordered.append(&finding);
  std::stable_sort(ordered.begin(), ordered.end(), [](const Finding* a, const Finding* b) {
    return a->severity != b->severity ? a->severity == Finding::Error : a->number < b->number;
  });

  QString report;
  int errors = 0, shown = 0;
  for (int i = 0; i < ordered.size(); ++i) {
    const Finding& finding = *ordered.at(i);
    const bool firstOfRule = i == 0 || ordered.at(i - 1)->number != finding.number;
    const bool lastOfRule = i + 1 == ordered.size() || ordered.at(i + 1)->number != finding.number;
    shown = firstOfRule ? 1 : shown + 1;
    errors += finding.severity == Finding::Error;
    const QString begin =
        QStringLiteral("DRC-%1 %2: ").arg(finding.number, 2, 10, QLatin1Char('0')).arg(severityWord(finding.severity));
    if (shown <= kShownFindingsOfARule)
      report += begin + finding.object + QLatin1String(": ") + finding.text + QLatin1String(" (") + finding.wayOut +
                QLatin1String(")\n");
    else if (lastOfRule)
      report += begin + QStringLiteral("%1 more of this rule\n").arg(shown - kShownFindingsOfARule);
  }
  if (findings.isEmpty()) return QStringLiteral("Design rules: no findings.\n");
  return report + QStringLiteral("Design rules: %1, %2.\n")
                      .arg(counted(errors, "error"), counted(findings.size() - errors, "warning"));
}

bool hasErrors(const QList<Finding>& findings) {
  return std::any_of(findings.begin(), findings.end(),
                     [](const Finding& finding) { return finding.severity == Finding::Error; });
}

}  // namespace ost

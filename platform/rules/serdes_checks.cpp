// Checks of the serdes core.
#include "platform/rules/serdes_checks.h"

#include "platform/plan/resolved_serdes.h"
#include "platform/text/near_names.h"

namespace ost {
namespace {

const QString& object() {
  static const QString text = QStringLiteral("serdes core");
  return text;
}

/// Clock or reset: a net of one bit.
void checkBit(const ResolvedName& name, const char* title, DesignRule rule, const Design& design,
              FindingList& findings) {
  const QString text = QStringLiteral("%1 \"%2\" ").arg(QLatin1String(title), name.name);
  if (name.bits.isEmpty())
    findings.add(rule, object(), text + QLatin1String("is not in the design") + nearHint(design.nearest(name.name)));
  else if (name.bits.size() > 1)
    findings.add(rule, object(), text + QLatin1String("has ") + counted(name.bits.size(), "bit"),
                 {{QStringLiteral("<net>"), name.bits.last().name}});
}

void checkBlocks(const ResolvedSerdes& resolved, FindingList& findings) {
  if (resolved.blocks.isEmpty())
    findings.add(DesignRule::SerdesNoBlock, object(), QStringLiteral("no module of the design is marked for it"));
  if (resolved.blocks.size() > 1) {
    QStringList names;
    for (const SerdesBlock& block : resolved.blocks.mid(0, 4))
      names += QLatin1Char('"') + block.name + QLatin1Char('"');
    if (resolved.blocks.size() > names.size()) names += QStringLiteral("...");
    findings.add(DesignRule::SerdesSeveralBlocks, object(),
                 QStringLiteral("it watches %1 together: %2")
                     .arg(counted(resolved.blocks.size(), "block"), names.join(QLatin1String(", "))));
  }
  for (const SerdesBlock& block : resolved.blocks) {
    if (block.nets.isEmpty())
      findings.add(DesignRule::SerdesNothingWatched, object(),
                   QStringLiteral("the block \"%1\" marks no net").arg(block.name));
    for (const WatchedNet& net : block.nets)
      if (!isSerdesWord(net.word))
        findings.add(DesignRule::SerdesWord, object(),
                     QStringLiteral("\"%1\" is marked with %2").arg(net.name, quoted(net.word)));
  }
  if (resolved.watched.size() > kMaxSerdesSignals)
    findings.add(DesignRule::SerdesTooManySignals, object(),
                 QStringLiteral("more than %1 bits are marked").arg(kMaxSerdesSignals));
}

void checkDrivers(const ResolvedSerdes& resolved, const Netlist& netlist, FindingList& findings) {
  const auto fault = [&netlist](const NetBit& bit) -> const char* {
    BitDriver driver;
    if (!netlist.driver(bit, driver)) return nullptr;
    if (driver.kind == BitDriver::Undriven) return "has no driver";
    return driver.kind == BitDriver::Constant ? "is constant" : nullptr;
  };
  const auto text = [](const NetBit& bit, const char* what) {
    return QStringLiteral("\"%1\" %2").arg(bit.name, QLatin1String(what));
  };
  if (resolved.clock.bits.size() == 1)
    if (const char* what = fault(resolved.clock.bits.first()))
      findings.add(DesignRule::SerdesClockNotRunning, object(),
                   QLatin1String("sample clock ") + text(resolved.clock.bits.first(), what));
  for (const PlanWatched& one : resolved.watched)
    if (const char* what = fault(one.net)) findings.add(DesignRule::SerdesSignalIdle, object(), text(one.net, what));
}

}  // namespace

void checkSerdes(const mero::ostrel::istSerdesCore& serdes, const Design& design, const Netlist* netlist,
                 FindingList& findings) {
  const ResolvedSerdes resolved = resolveSerdes(serdes, design);
  if (design.roles().j2w)
    findings.add(DesignRule::SerdesPathTaken, object(), QStringLiteral("a module of the design has the role \"j2w\""));
  checkBlocks(resolved, findings);
  if (resolved.clock.name.isEmpty())
    findings.add(DesignRule::SerdesNoClock, object(), QStringLiteral("no sample clock is set"));
  else
    checkBit(resolved.clock, "sample clock", DesignRule::SerdesClockNet, design, findings);
  if (!resolved.reset.name.isEmpty()) checkBit(resolved.reset, "reset", DesignRule::SerdesResetNet, design, findings);
  if (netlist) checkDrivers(resolved, *netlist, findings);
}

}  // namespace ost

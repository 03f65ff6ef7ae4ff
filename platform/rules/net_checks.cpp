// Checks that need drivers and clocks: undriven and constant nets, and nets of other clock domains.
#include <QSet>

#include "platform/rules/core_check.h"

namespace ost {

namespace {

/// The bits of one net that share a fault: one finding, however wide the net.
struct NetFault {
  DesignRule rule;
  QString object;
  QString net;
  QString detail;  ///< What tells faults of one rule and net apart: the other clock.
  QStringList bits;
};

QString netName(const NetBit& bit) {
  return bit.instancePath.isEmpty() ? bit.net : bit.instancePath + QLatin1Char('/') + bit.net;
}

/// Collects faults bit by bit and joins those of one net.
class NetFaults {
 public:
  void add(DesignRule rule, const QString& object, const NetBit& bit, const QString& detail = QString()) {
    const QString key = QString::number(int(rule)) + QLatin1Char('\n') + object + QLatin1Char('\n') + netName(bit) +
                        QLatin1Char('\n') + detail;
    auto found = index_.constFind(key);
    if (found == index_.constEnd()) {
      found = index_.insert(key, faults_.size());
      faults_.append({rule, object, netName(bit), detail, {}});
    }
    faults_[*found].bits.append(bit.name);
  }
  const QList<NetFault>& faults() const { return faults_; }

 private:
  QList<NetFault> faults_;
  QHash<QString, int> index_;
};

QString faultText(const NetFault& fault) {
  constexpr int kNamedBits = 4;
  QString text;
  if (fault.bits.size() == 1) {
    text = QLatin1Char('"') + fault.bits.first() + QLatin1Char('"');
  } else {
    text = QStringLiteral("%1 of \"%2\"").arg(counted(fault.bits.size(), "bit"), fault.net);
    if (fault.bits.size() <= kNamedBits)
      text += QLatin1String(" (") + fault.bits.join(QStringLiteral(", ")) + QLatin1Char(')');
  }
  const bool one = fault.bits.size() == 1;
  switch (fault.rule) {
    case DesignRule::NetUndriven:
      return text + QLatin1String(one ? " has no driver" : " have no driver");
    case DesignRule::NetConstant:
      return text + QLatin1String(one ? " is constant" : " are constant");
    case DesignRule::ClockCrossing:
      return text + QLatin1String(one ? " is clocked by \"" : " are clocked by \"") + fault.detail +
             QLatin1String("\", not by the sample clock");
    default:
      return text + QLatin1String(" is the sample clock of the core");
  }
}

}  // namespace

void CoreCheck::checkNets(const Netlist& netlist) const {
  NetBit clock;
  bool clockRuns = false;
  if (hasClock_) {
    ResolvedBits resolved;
    resolved.append(clock_);
    const NetBit& named = resolved.bits.first();
    BitDriver driver;
    clock = netlist.canonical(named);
    clockRuns =
        netlist.driver(named, driver) && driver.kind != BitDriver::Undriven && driver.kind != BitDriver::Constant;
    if (!clockRuns)
      report(DesignRule::SampleClockStands, QString(),
             QStringLiteral("sample clock \"%1\" %2")
                 .arg(named.name, QLatin1String(driver.kind == BitDriver::Constant ? "is constant" : "has no driver")));
  }

  NetFaults faults;
  int tracedRegisters = 0, registersOfClock = 0;
  QSet<QString> otherClocks;
  const auto look = [&](const ResolvedBits& name, bool traced) {
    for (const NetBit& bit : name.bits) {
      if (!pulse_.beat()) return;
      BitDriver driver;
      if (!netlist.driver(bit, driver)) continue;
      if (driver.kind == BitDriver::Undriven) faults.add(DesignRule::NetUndriven, name.object, bit);
      if (driver.kind == BitDriver::Constant) faults.add(DesignRule::NetConstant, name.object, bit);
      if (!clockRuns) continue;
      if (netlist.canonical(bit) == clock) faults.add(DesignRule::SampleClockTraced, name.object, bit);
      const bool isRegister = driver.kind == BitDriver::FlipFlop || driver.kind == BitDriver::Memory;
      if (!isRegister || !driver.hasClock) continue;
      const bool same = driver.clock == clock;
      if (!same) {
        faults.add(DesignRule::ClockCrossing, name.object, bit, driver.clock.name);
        otherClocks.insert(driver.clock.name);
      }
      if (traced) {
        ++tracedRegisters;
        registersOfClock += same;
      }
    }
  };
  look(traced_, true);
  for (const ResolvedBits& name : watched_) look(name, false);

  const FindingList::Fills clockFill = {
      {QStringLiteral("<clock>"), otherClocks.size() == 1 ? *otherClocks.begin() : QStringLiteral("<clock>")}};
  if (tracedRegisters > 0 && registersOfClock == 0)
    report(DesignRule::ForeignSampleClock, QString(),
           QStringLiteral("sample clock \"%1\" clocks none of the %2")
               .arg(clock_.canonicalName, counted(tracedRegisters, "traced register")),
           clockFill);
  for (const NetFault& fault : faults.faults())
    findings_.add(fault.rule, fault.object, faultText(fault),
                  {{QStringLiteral("<core>"), core_.name},
                   {QStringLiteral("<clock>"), fault.detail.isEmpty() ? QStringLiteral("<clock>") : fault.detail}});
}

}  // namespace ost

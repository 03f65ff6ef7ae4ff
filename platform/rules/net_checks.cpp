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
  /// A bit that is driven: what its net lacks are single bits.
  void addDriven(const QString& object, const NetBit& bit) {
    if (object == lastObject_ && netName(bit) == lastDriven_) return;  // bits of a net stand side by side
    lastObject_ = object;
    lastDriven_ = netName(bit);
    driven_.insert(object + QLatin1Char('\n') + lastDriven_);
  }
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
  QList<NetFault> faults() const {
    QList<NetFault> all = faults_;
    for (NetFault& fault : all)
      if (fault.rule == DesignRule::NetUndriven && driven_.contains(fault.object + QLatin1Char('\n') + fault.net))
        fault.rule = DesignRule::NetPartlyUndriven;
    return all;
  }

 private:
  QString lastObject_, lastDriven_;
  QSet<QString> driven_;
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
    case DesignRule::NetPartlyUndriven:
      return text + QLatin1String(one ? " has no driver" : " have no driver");
    case DesignRule::NetConstant:
      return text + QLatin1String(one ? " is constant" : " are constant");
    case DesignRule::ClockCrossing:
      if (fault.detail.isEmpty())
        return text + QLatin1String(one ? " is an input of the top" : " are inputs of the top");
      return text + QLatin1String(one ? " is clocked by \"" : " are clocked by \"") + fault.detail +
             QLatin1String("\", not by the sample clock");
    default:
      return text + QLatin1String(" is the sample clock of the core");
  }
}

/// To which clock a net belongs: the one of its register. Unknown: logic, or what has no clock.
enum class Domain { Unknown, SampleClock, OtherClock, TopInput };

Domain domainOf(const BitDriver& driver, const NetBit& clock) {
  if (driver.kind == BitDriver::TopPort) return Domain::TopInput;
  const bool isRegister = driver.kind == BitDriver::FlipFlop || driver.kind == BitDriver::Memory;
  if (!isRegister || !driver.hasClock) return Domain::Unknown;
  return driver.clock == clock ? Domain::SampleClock : Domain::OtherClock;
}

/// The nets of one core against its sample clock.
class DomainCheck {
 public:
  /// `clock`: canonical; null without a sample clock that runs, whose domain is then left open.
  DomainCheck(const Netlist& netlist, const NetBit* clock, Pulse& pulse)
      : netlist_(netlist), clock_(clock), pulse_(pulse) {}

  void lookTraced(const QString& object, const NetBit& bit) {
    const Domain domain = look(object, bit);
    tracedRegisters_ += domain == Domain::SampleClock || domain == Domain::OtherClock;
    registersOfClock_ += domain == Domain::SampleClock;
  }
  void lookAll(const QString& object, const QVector<NetBit>& bits) {
    for (const NetBit& bit : bits) look(object, bit);
  }

  QList<NetFault> faults() const { return faults_.faults(); }
  int tracedRegisters() const { return tracedRegisters_; }
  bool clockIsForeign() const { return tracedRegisters_ > 0 && registersOfClock_ == 0; }
  const QSet<QString>& otherClocks() const { return otherClocks_; }

 private:
  Domain look(const QString& object, const NetBit& bit) {
    BitDriver driver;
    if (!pulse_.beat() || !netlist_.driver(bit, driver)) return Domain::Unknown;
    if (driver.kind == BitDriver::Undriven)
      faults_.add(DesignRule::NetUndriven, object, bit);
    else
      faults_.addDriven(object, bit);
    if (driver.kind == BitDriver::Constant) faults_.add(DesignRule::NetConstant, object, bit);
    if (!clock_) return Domain::Unknown;
    if (netlist_.canonical(bit) == *clock_) {
      faults_.add(DesignRule::SampleClockTraced, object, bit);
      return Domain::Unknown;
    }
    const Domain domain = domainOf(driver, *clock_);
    if (domain == Domain::TopInput) faults_.add(DesignRule::ClockCrossing, object, bit);
    if (domain == Domain::OtherClock) {
      faults_.add(DesignRule::ClockCrossing, object, bit, driver.clock.name);
      otherClocks_.insert(driver.clock.name);
    }
    return domain;
  }

  const Netlist& netlist_;
  const NetBit* clock_;
  Pulse& pulse_;
  NetFaults faults_;
  int tracedRegisters_ = 0, registersOfClock_ = 0;
  QSet<QString> otherClocks_;
};

}  // namespace

void findForeignEnables(const Netlist& netlist, ResolvedCore& core) {
  const auto isForeign = [&](const ResolvedName& enable) {
    BitDriver driver;
    if (core.sampleClock.bits.size() != 1 || enable.bits.size() != 1 || !netlist.driver(enable.bits.first(), driver))
      return false;
    const Domain domain = domainOf(driver, netlist.canonical(core.sampleClock.bits.first()));
    return domain == Domain::OtherClock || domain == Domain::TopInput;
  };
  core.sampleEnableForeign = isForeign(core.sampleEnable);
  core.triggerEnableForeign = isForeign(core.triggerEnable);
}

bool CoreCheck::findRunningClock(const Netlist& netlist, NetBit& clock) const {
  if (resolved_.sampleClock.bits.size() != 1) return false;  // reported already
  const NetBit& named = resolved_.sampleClock.bits.first();
  BitDriver driver;
  clock = netlist.canonical(named);
  if (netlist.driver(named, driver) && driver.kind != BitDriver::Undriven && driver.kind != BitDriver::Constant)
    return true;
  report(DesignRule::SampleClockNotRunning, QString(),
         QStringLiteral("sample clock \"%1\" %2")
             .arg(named.name, QLatin1String(driver.kind == BitDriver::Constant ? "is constant" : "has no driver")));
  return false;
}

void CoreCheck::checkNets(const Netlist& netlist) const {
  NetBit clock;
  const bool clockRuns = findRunningClock(netlist, clock);
  DomainCheck check(netlist, clockRuns ? &clock : nullptr, pulse_);
  for (const ResolvedSignal& signal : resolved_.traced)
    if (signal.width == 1) check.lookTraced(object(), signal.bit);
  for (const ResolvedName* enable : {&resolved_.sampleEnable, &resolved_.triggerEnable})
    if (enable->bits.size() == 1)
      check.lookAll(object(QLatin1String(enable == &resolved_.sampleEnable ? "sample enable" : "trigger enable")),
                    enable->bits);
  for (const ResolvedUnit& unit : resolved_.units)
    check.lookAll(object(QLatin1String("unit ") + unit.unit->name), unit.bits);

  const QString unknown = QStringLiteral("<clock>");
  const auto clockFill = [&unknown](const QString& name) {
    return qMakePair(unknown, name.isEmpty() ? unknown : name);
  };
  if (check.clockIsForeign())
    report(DesignRule::ForeignSampleClock, QString(),
           QStringLiteral("sample clock \"%1\" clocks none of the %2")
               .arg(resolved_.sampleClock.bits.first().name, counted(check.tracedRegisters(), "traced register")),
           {clockFill(check.otherClocks().size() == 1 ? *check.otherClocks().begin() : QString())});
  for (const NetFault& fault : check.faults())
    findings_.add(fault.rule, fault.object, faultText(fault),
                  {{QStringLiteral("<core>"), core_.name}, clockFill(fault.detail)});
}

}  // namespace ost

// What the report says, section by section.
#include "platform/report/run_report.h"

#include "platform/report/next_steps.h"
#include "platform/rtl/debug_module.h"
#include "platform/text/byte_text.h"

namespace ost {
namespace {

/// What a device has, from its maker's data sheet; block RAMs of 36 Kbit.
struct Device {
  const char* name;
  int luts, flipFlops, blockRams;
};
constexpr Device kDevices[] = {
    {"Artix-7 35T", 20800, 41600, 50}, {"Artix-7 100T", 63400, 126800, 135}, {"Kintex-7 325T", 203800, 407600, 445}};

QString count(qint64 number, const char* what) {
  return QStringLiteral("%1 %2%3").arg(number).arg(QLatin1String(what), QLatin1String(number == 1 ? "" : "s"));
}

QString percent(int part, int whole) {
  return QStringLiteral("%1 %").arg(100.0 * part / whole, 0, 'f', 1);
}

QStringList unicode(const QStringList& texts) {
  QStringList list;
  for (const QString& text : texts) list.append(unicodeFromText(text));
  return list;
}

QString signalNames(const PlanCore& core, const QVector<int>& bits) {
  QStringList names;
  for (int i = bits.size(); i-- > 0;) names.append(unicodeFromText(core.triggerBits[bits[i]].name));
  if (names.size() > 4) names = QStringList(names.mid(0, 2)) << QStringLiteral("...") << names.last();
  return names.join(QLatin1Char(' '));
}

class RunReport {
 public:
  RunReport(const InsertPlan& plan, const Design& design, const RunFacts& facts)
      : plan_(plan), design_(design), facts_(facts) {}

  ReportDocument make() const {
    ReportDocument document;
    document.title =
        unicodeFromText(QStringLiteral("Debug cores in %1, project %2").arg(plan_.topModule, plan_.projectName));
    document.picture = ProbePicture(plan_);
    document.sections = {overview(), picture()};
    for (const PlanCore& core : plan_.cores) document.sections.append(coreSection(core));
    if (plan_.wishbone) document.sections.append(wishboneSection(*plan_.wishbone));
    if (plan_.serdes) document.sections.append(serdesSection(*plan_.serdes));
    document.sections += {cost(), rules(), proof(), nextSteps(plan_, facts_)};
    return document;
  }

 private:
  ReportSection overview() const;
  ReportSection picture() const;
  ReportSection coreSection(const PlanCore& core) const;
  ReportSection wishboneSection(const PlanWishbone& wishbone) const;
  ReportSection serdesSection(const PlanSerdes& serdes) const;
  ReportSection cost() const;
  ReportSection rules() const;
  ReportSection proof() const;
  QString wayText() const;

  const InsertPlan& plan_;
  const Design& design_;
  const RunFacts& facts_;
};

QString RunReport::wayText() const {
  switch (plan_.jtag.way) {
    case JtagWay::Pins:
      return QStringLiteral("A TAP of its own on the pins %1, %2, %3, %4 of the top.")
          .arg(plan_.pins.tck, plan_.pins.tms, plan_.pins.tdi, plan_.pins.tdo);
    case JtagWay::Bscane2:
    case JtagWay::GwJtag:
      return QStringLiteral("The device's own TAP through its primitive %1, chain %2; no pins at the top.")
          .arg(QLatin1String(plan_.jtag.way == JtagWay::Bscane2 ? "BSCANE2" : "GW_JTAG"))
          .arg(plan_.jtag.chain);
    case JtagWay::Wrapper:
      break;
  }
  return QStringLiteral("A wrapper of the user's, copied as ostrel_jtag.v.");
}

ReportSection RunReport::overview() const {
  ReportSection section{QStringLiteral("Overview"), {}};
  QList<QStringList> rows{{QStringLiteral("Top module"), unicodeFromText(plan_.topModule)},
                          {QStringLiteral("Design"),
                           QStringLiteral("%1, %2, %3 as named nets")
                               .arg(count(design_.moduleCount(), "module"), count(design_.instanceCount(), "instance"),
                                    count(design_.netBitCount(), "bit"))},
                          {QStringLiteral("Logic-analyzer cores"), QString::number(plan_.cores.size())},
                          {QStringLiteral("Way to the chip"), wayText()},
                          {QStringLiteral("Hash of the project"), QString::fromLatin1(plan_.projectHash)},
                          {QStringLiteral("Output folder"), facts_.folder}};
  if (!facts_.blackBoxes.isEmpty())
    rows.append({QStringLiteral("Black boxes"), unicode(facts_.blackBoxes).join(QStringLiteral(", "))});
  section.table({QStringLiteral("What"), QStringLiteral("Value")}, rows);
  return section;
}

ReportSection RunReport::picture() const {
  ReportSection section{QStringLiteral("What is probed where"), {}};
  section.say(QStringLiteral("Instances with probes; the bits are those of nets declared in the instance itself."));
  section.blocks.append({ReportBlock::Picture, {}, {}, {}});
  return section;
}

ReportSection RunReport::coreSection(const PlanCore& core) const {
  ReportSection section{QStringLiteral("Core ") + unicodeFromText(core.name), {}};
  const auto enable = [](bool has, const NetBit& bit, bool low) {
    return has ? unicodeFromText(bit.name) + QLatin1String(low ? " (active low)" : "") : QStringLiteral("always");
  };
  QList<QStringList> rows{
      {QStringLiteral("Sample clock"), unicodeFromText(core.sampleClock.name)},
      {QStringLiteral("Sample enable"), enable(core.hasSampleEnable, core.sampleEnable, core.sampleEnableActiveLow)},
      {QStringLiteral("Trigger enable"),
       enable(core.hasTriggerEnable, core.triggerEnable, core.triggerEnableActiveLow)},
      {QStringLiteral("Memory"),
       QStringLiteral("%1 of %2, %3")
           .arg(count(qint64(core.windows) * core.windowSamples, "sample"), count(core.sampleBits(), "bit"),
                QLatin1String(core.distributedRam && !core.distRamDisabled ? "distributed RAM" : "block RAM"))},
      {QStringLiteral("Windows"),
       QStringLiteral("%1 of %2").arg(core.windows).arg(count(core.windowSamples, "sample"))},
      {QStringLiteral("Timestamps"), core.timestampBits ? count(core.timestampBits, "bit") : QStringLiteral("none")}};
  if (core.eventCounter)
    rows.append({QStringLiteral("Event counter"), QStringLiteral("triggers at event %1").arg(core.eventCount)});
  if (!core.triggerOutNames().isEmpty())
    rows.append({QStringLiteral("Trigger output"), unicode(core.triggerOutNames()).join(QStringLiteral(", "))});
  section.table({QStringLiteral("Option"), QStringLiteral("Value")}, rows);

  rows.clear();
  for (const PlanProbe& probe : core.probes)
    rows.append({unicodeFromText(probe.name), QString::number(probe.positions.size())});
  section.table({QStringLiteral("Signal"), QStringLiteral("Bits")}, rows);

  rows.clear();
  for (const PlanUnit& unit : core.units)
    rows.append({unicodeFromText(unit.name), signalNames(core, unit.inputs), operatorText(unit.op),
                 unicodeFromText(unit.valueText), radixText(unit.radix)});
  section.table({QStringLiteral("Unit"), QStringLiteral("Signals"), QStringLiteral("Operator"), QStringLiteral("Value"),
                 QStringLiteral("Radix")},
                rows);

  rows.clear();
  for (const PlanExpression& expression : core.expressions)
    rows.append({unicodeFromText(expression.name), unicodeFromText(expression.text),
                 QString::number(expression.maxSequenceDepth), QString::number(expression.maxEventCount)});
  section.table(
      {QStringLiteral("Expression"), QStringLiteral("Text"), QStringLiteral("Steps"), QStringLiteral("Count up to")},
      rows);
  return section;
}

ReportSection RunReport::wishboneSection(const PlanWishbone& wishbone) const {
  ReportSection section{QStringLiteral("Wishbone master"), {}};
  const QString bus = wishbone.isConnected
                          ? QStringLiteral("shared with the masters of %1").arg(unicodeFromText(wishbone.instance))
                          : QStringLiteral("ports %1* of the top").arg(wishbone.portPrefix);
  QList<QStringList> rows{
      {QStringLiteral("Bus"), bus},
      {QStringLiteral("Address"), count(wishbone.addressBits, "bit")},
      {QStringLiteral("Byte order"), QLatin1String(wishbone.isBigEndian ? "big-endian" : "little-endian")}};
  if (wishbone.isConnected) rows.append({QStringLiteral("Clock"), unicodeFromText(wishbone.clock.name)});
  section.table({QStringLiteral("What"), QStringLiteral("Value")}, rows);
  return section;
}

ReportSection RunReport::serdesSection(const PlanSerdes& serdes) const {
  ReportSection section{QStringLiteral("Serdes core"), {}};
  section.table(
      {QStringLiteral("Option"), QStringLiteral("Value")},
      {{QStringLiteral("Sample clock"), unicodeFromText(serdes.clock.name)},
       {QStringLiteral("Reset"), serdes.hasReset ? unicodeFromText(serdes.reset.name) : QStringLiteral("none")}});
  QList<QStringList> rows;
  for (const QVector<PlanWatched>& watched : {serdes.clocks, serdes.levels})
    for (const PlanWatched& one : watched) rows.append({unicodeFromText(one.net.name), unicodeFromText(one.word)});
  section.table({QStringLiteral("Signal"), QStringLiteral("Watched as")}, rows);
  return section;
}

ReportSection RunReport::cost() const {
  ReportSection section{QStringLiteral("Estimated cost"), {}};
  QList<QStringList> rows;
  ResourceEstimate total;
  const auto add = [&](const QString& what, const ResourceEstimate& e) {
    rows.append({what, QString::number(e.luts), QString::number(e.flipFlops), QString::number(e.blockRams),
                 QString::number(e.memoryBits)});
    total.luts += e.luts;
    total.flipFlops += e.flipFlops;
    total.blockRams += e.blockRams;
    total.memoryBits += e.memoryBits;
  };
  for (const PlanCore& core : plan_.cores)
    add(QStringLiteral("Core ") + unicodeFromText(core.name), estimateCore(core));
  if (plan_.wishbone) add(QStringLiteral("Wishbone master"), estimateWishbone(*plan_.wishbone));
  if (plan_.serdes) add(QStringLiteral("Serdes core"), estimateSerdes(*plan_.serdes));
  add(QStringLiteral("JTAG hub"), estimateHub(plan_));
  const ResourceEstimate sum = total;
  add(QStringLiteral("Together"), sum);
  section.table({QStringLiteral("Part"), QStringLiteral("LUTs"), QStringLiteral("Flip-flops"),
                 QStringLiteral("Block RAMs (36 Kbit)"), QStringLiteral("Memory bits")},
                rows);
  section.say(QStringLiteral("Of a device:"));
  rows.clear();
  for (const Device& device : kDevices)
    rows.append({QLatin1String(device.name), percent(sum.luts, device.luts), percent(sum.flipFlops, device.flipFlops),
                 percent(sum.blockRams, device.blockRams)});
  section.table(
      {QStringLiteral("Device"), QStringLiteral("LUTs"), QStringLiteral("Flip-flops"), QStringLiteral("Block RAMs")},
      rows);
  return section;
}

ReportSection RunReport::rules() const {
  ReportSection section{QStringLiteral("Design rules"), {}};
  section.blocks.append({ReportBlock::Text, unicode(facts_.findings), {}, {}});
  return section;
}

ReportSection RunReport::proof() const {
  ReportSection section{QStringLiteral("Proof that the design is unchanged"), {}};
  if (facts_.proof.isEmpty())
    section.say(QStringLiteral("Not asked for. It is made by a run after: ost_design prove on"));
  else
    section.blocks.append({ReportBlock::Text, unicode(facts_.proof), {}, {}});
  return section;
}

}  // namespace

ReportDocument reportOf(const InsertPlan& plan, const Design& design, const RunFacts& facts) {
  return RunReport(plan, design, facts).make();
}

}  // namespace ost

// The choices, most of them weighted so that every feature is met often and a run stays short.
#include "tests/sim/oracle/generator.h"

#include <algorithm>

namespace oracle {
namespace {

constexpr int kArmRow = 40;  ///< Of a rehearsal on the record: the device has left its reset.
constexpr int kMostRunRows = 2600;

QString digitsInRadix(const QByteArray& bits, const QString& radix) {
  if (radix == "bin") return bits;
  if (radix == "dec") return QString::number(bits.toULongLong(nullptr, 2));
  const int each = radix == "oct" ? 3 : 4;
  QByteArray padded = bits;
  while (padded.size() % each) padded.prepend('0');
  QString digits;
  for (int i = 0; i < padded.size(); i += each) {
    const QByteArray part = padded.mid(i, each);
    digits += part.contains('x') ? QString("x") : QString::number(part.toInt(nullptr, 2), 16);
  }
  return digits;
}

}  // namespace

Project Generator::device() {
  Project project;
  project.dut = &duts()[below(duts().size())];
  double fastest = 1e9;
  for (int i = 0; i < project.dut->clocks.size(); ++i) {
    project.clockPeriods += 4.0 + 2 * below(12);
    fastest = std::min(fastest, project.clockPeriods.last());
  }
  // TCK from forty times faster to forty times slower than the fastest sample clock.
  static const double rates[] = {0.025, 0.1, 0.3, 0.5, 0.77, 1.0, 1.9, 3.3, 8.0};
  project.tckHalfPeriod = std::max(0.05, fastest / 2 * (chance(4) ? 40 : rates[below(9)]));
  return project;
}

QStringList Generator::select(const Dut& dut, QString& word, int mostBits) {
  const Net net = pick(dut.nets);
  QStringList bits = net.bits();
  word = net.name;
  if (!net.isVector) return bits;
  if (net.width() <= mostBits && chance(50)) return bits;
  const int first = below(bits.size());
  const int count = chance(50) ? 1 : 1 + below(std::min(mostBits, bits.size() - first));
  const int step = net.left >= net.right ? -1 : 1;
  const int from = net.left + step * first, to = from + step * (count - 1);
  word += count == 1 ? QString("[%1]").arg(from) : QString("[%1:%2]").arg(from).arg(to);
  return bits.mid(first, count);
}

void Generator::giveValue(Unit& unit, const Record& record) {
  if (unit.op == ".SC.") {
    QByteArray pattern;
    const int row = kArmRow + below(record.rows.size() - kArmRow - 8);
    const int length = unit.digits.isEmpty() ? 1 + below(5) : unit.digits.size();
    for (int i = 0; i < length; ++i) pattern += record.at(row + i, unit.bits[0]) ? '1' : '0';
    unit.digits = pattern;
    return;
  }
  QByteArray bits;
  const int row = kArmRow + below(record.rows.size() - kArmRow);
  const bool edge = unit.op == ".RE." || unit.op == ".FE.";
  const bool equality = unit.op == "==" || unit.op == "!=";
  const int group = unit.radix == "bin" ? 1 : unit.radix == "oct" ? 3 : 4;
  for (const QString& bit : unit.bits) bits += edge ? (chance(60) ? '1' : '0') : record.at(row, bit) ? '1' : '0';
  if (edge && !bits.contains('1')) bits[bits.size() - 1] = '1';
  // Don't-care digits cover whole digits, counted from the right.
  for (int end = bits.size(); equality && unit.radix != "dec" && end > 0; end -= group)
    if (chance(35))
      for (int i = std::max(0, end - group); i < end; ++i) bits[i] = 'x';
  unit.digits = digitsInRadix(bits, unit.radix);
}

Unit Generator::makeUnit(const Dut& dut, const Record& record, int index) {
  static const QStringList ops = {"==", "!=", ">", ">=", "<", "<=", ".RE.", ".FE.", ".SC.", "==", ".RE."};
  static const QStringList radices = {"bin", "oct", "dec", "hex"};
  Unit unit;
  unit.name = QString("TU%1").arg(index + 1);
  unit.op = pick(ops);
  unit.radix = unit.op == ".SC." ? "bin" : pick(radices);
  const int names = unit.op == ".SC." ? 1 : 1 + below(2);
  for (int i = 0; i < names; ++i) {
    QString word;
    const QStringList bits = select(dut, word, unit.op == ".SC." ? 1 : 8);
    if (unit.op == ".SC." && bits.size() > 1) {
      word = bits[0];
      unit.bits = QStringList{bits[0]};
    } else {
      unit.bits += bits;
    }
    unit.signalNames += word;
  }
  // Nothing is compared twice by one unit.
  if (QStringList(unit.bits).removeDuplicates() > 0) return makeUnit(dut, record, index);
  giveValue(unit, record);
  return unit;
}

Term Generator::makeTerm(int units, int depth) {
  Term term;
  if (depth == 0 || chance(40)) {
    term.unit = below(units);
    return term;
  }
  static const Term::Kind kinds[] = {Term::Not, Term::And, Term::Or, Term::Xor, Term::Or};
  term.kind = kinds[below(5)];
  for (int i = 0; i < (term.kind == Term::Not ? 1 : 2); ++i) term.parts += makeTerm(units, depth - 1);
  return term;
}

void Generator::makeProbes(Core& core, const Dut& dut) {
  QStringList taken, names;
  for (int i = 2 + below(5); i > 0; --i) {
    Probe probe;
    probe.bits = select(dut, probe.signal, 32);
    if ((taken + probe.bits).removeDuplicates() > 0) continue;
    taken += probe.bits;
    names += probe.signal;
    core.probes += probe;
  }
  if (core.probes.size() > 2 && chance(30)) {
    core.busFrom = below(core.probes.size() - 1);
    core.busTo = core.busFrom + 1;
  }
  // What is traced already becomes references to it: the same bits, shown once more.
  for (int i = 0; i < 12 && chance(60); ++i) {
    Probe probe;
    probe.bits = select(dut, probe.signal, 32);
    if ((taken + probe.bits).removeDuplicates() == 0 || probe.bits.size() < 2 || names.contains(probe.signal)) continue;
    names += probe.signal;
    taken += probe.bits;
    core.probes += probe;
  }
}

Core Generator::makeCore(const Project& project, const QVector<Record>& records, int index) {
  const Dut& dut = *project.dut;
  Core core;
  core.name = QString("c%1").arg(index);
  const int clock = below(dut.clocks.size());
  core.clock = dut.clocks[clock];
  const Record& record = records[clock];
  makeProbes(core, dut);
  if (chance(40)) core.sampleEnable = pick(dut.enables);
  core.sampleEnableLow = chance(50);
  core.multiple = chance(45);
  if (chance(45)) core.triggerEnable = pick(dut.enables);
  core.triggerEnableLow = chance(50);
  core.depth = chance(4) ? 1024 : 16 << below(4);
  core.windowSamples = core.depth;
  if (core.multiple) {
    core.windowSamples = 16;
    while (core.windowSamples < core.depth && chance(30)) core.windowSamples *= 2;
    while (!core.triggerEnable.isEmpty() && core.windows * core.windowSamples < core.depth && chance(80))
      core.windows *= 2;
  }
  core.dram = chance(50);
  core.distRamDisable = chance(25);
  int depthBits = 4;
  while ((1 << depthBits) < core.depth) ++depthBits;
  if (chance(40)) core.timestampBits = depthBits + 1 + below(12);
  core.includeTrigger = chance(40);
  if (chance(core.windows > 1 ? 65 : 35)) core.eventCount = 2 + below(4);
  if (chance(45)) core.triggerOut = static_cast<Core::TriggerOut>(1 + below(3));
  core.displayRadix = pick(QStringList{"bin", "oct", "dec", "hex"});
  core.triggerOutLow = chance(50);
  core.triggerOutMinPulse = below(5);
  const int units = 1 + below(chance(20) ? 7 : 4);
  for (int i = 0; i < units; ++i) core.units += makeUnit(dut, record, i);
  for (int i = 1 + below(2); i > 0; --i) {
    Expression expression;
    expression.name = QString("TE%1").arg(core.expressions.size() + 1);
    expression.ebr = chance(40);
    const int steps = chance(50) ? 1 : 2 + below(2);
    for (int s = 0; s < steps; ++s) expression.steps += {makeTerm(units, 2), chance(60) ? 1 : 2 + below(3)};
    while (expression.maxSteps < steps || chance(20)) expression.maxSteps *= expression.maxSteps < 8 ? 2 : 1;
    int most = 1;
    for (const Step& step : expression.steps) most = std::max(most, step.count);
    while (expression.maxCount < most || chance(20)) expression.maxCount *= 2;
    core.expressions += expression;
  }
  return core;
}

RunChoice Generator::choice(const Core& core, const Record& record, bool asInserted) {
  RunChoice choice;
  choice.position = below(core.windowSamples);
  choice.windows = asInserted ? core.windows : 1 + below(core.windows);
  choice.eventCount = asInserted ? std::max(core.eventCount, 1) : 1 + below(std::max(core.eventCount, 1));
  choice.enabled = QVector<bool>(core.expressions.size(), true);
  if (core.expressions.size() > 1 && chance(50)) choice.enabled[below(core.expressions.size())] = false;
  choice.units = core.units;
  if (asInserted) return choice;
  for (Unit& unit : choice.units) {
    static const QStringList order = {"==", "!=", ">", ">=", "<", "<="}, match = {"==", "!=", ".RE.", ".FE."};
    if (order.contains(unit.op) && !match.contains(unit.op))
      unit.op = pick(order);
    else if (match.contains(unit.op))
      unit.op = pick(match);
    const bool noDontCare = order.contains(core.units[&unit - choice.units.data()].op) &&
                            !match.contains(core.units[&unit - choice.units.data()].op);
    giveValue(unit, record);
    if (noDontCare) unit.digits.replace('x', '1');
  }
  return choice;
}

bool isWorthRunning(const Core& core, const RunChoice& choice, const Record& record) {
  const Expected expected = expectedCapture(core, choice, record, kArmRow);
  return expected.complete && expected.rowsSeen - kArmRow <= kMostRunRows;
}

namespace {

/// A core that would see nothing move proves nothing.
bool seesMovement(const Core& core, const RunChoice& choice, const Record& record) {
  int toggles = 0;
  for (const QVector<ExpectedSample>& window : expectedCapture(core, choice, record, kArmRow).windows)
    for (const Probe& probe : core.probes)
      for (const QString& bit : probe.bits)
        for (int i = 1; i < window.size(); ++i)
          toggles += record.at(window[i].row, bit) != record.at(window[i - 1].row, bit);
  return toggles > 0;
}

}  // namespace

void Generator::addCores(Project& project, const QVector<Record>& records) {
  const int count = 1 + (chance(40) ? 1 + below(2) : 0);
  while (project.cores.size() < count) {
    const Core core = makeCore(project, records, project.cores.size());
    const Record& record = records[project.dut->clocks.indexOf(core.clock)];
    RunChoice whole = choice(core, record, true);
    whole.position = core.windowSamples - 1;
    whole.enabled.fill(true);
    if (isWorthRunning(core, whole, record) && seesMovement(core, whole, record)) project.cores += core;
  }
}

}  // namespace oracle

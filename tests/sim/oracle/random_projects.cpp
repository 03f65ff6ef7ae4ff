// Random projects that trigger: every choice comes from the seed, the values from what the device really did. Most
// choices are weighted so that every feature is met often and a run stays short.
#include <algorithm>
#include <random>

#include "tests/sim/oracle/runs.h"

namespace oracle {
namespace {

constexpr int kArmRow = 40;  ///< Of a rehearsal on the record: the device has left its reset.
constexpr int kMostRunRows = 2600;
constexpr int kRehearsalRows = 3000;
constexpr int kRunsPerCore = 2;    ///< One where TCK is so slow that each takes long.
constexpr int kPatience = 400000;  ///< TCK cycles for a run that is expected to trigger.

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

/// A run on the record ends, and does not take ages.
bool isWorthRunning(const Core& core, const RunChoice& choice, const Record& record) {
  const Expected expected = expectedCapture(core, choice, record, kArmRow);
  return expected.complete && expected.rowsSeen - kArmRow <= kMostRunRows;
}

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

/// A simulation in which each TCK takes many sample clocks.
bool isSlow(const Project& project) {
  return project.tckHalfPeriod > 5 * *std::min_element(project.clockPeriods.begin(), project.clockPeriods.end());
}

class Generator {
 public:
  explicit Generator(quint32 seed) : random_(seed * 7919u + 17u) {}

  int below(int n) { return static_cast<int>(random_() % static_cast<quint32>(n)); }
  bool chance(int percent) { return below(100) < percent; }
  template <typename List>
  auto pick(const List& list) {
    return list[below(list.size())];
  }

  /// The device, its clocks and TCK's rate; no core yet.
  Project device() {
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

  /// Adds one to three cores whose expressions fire on the records (one for each clock of the device).
  void addCores(Project& project, const QVector<Record>& records) {
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

  /// What a run of the core changes; the first run takes the values as inserted.
  RunChoice choice(const Core& core, const Record& record, bool asInserted) {
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

 private:
  /// Bits of a random selection of one net, with the word that names it.
  QStringList select(const Dut& dut, QString& word, int mostBits) {
    const Net net = pick(dut.nets);
    QStringList bits = net.bits();
    word = net.name;
    if (!net.isVector) return bits;
    if (net.width() <= mostBits && chance(50)) return bits;
    const int first = below(bits.size());
    const int count = chance(50) ? 1 : 1 + below(std::min(mostBits, int(bits.size()) - first));
    const int step = net.left >= net.right ? -1 : 1;
    const int from = net.left + step * first, to = from + step * (count - 1);
    word += count == 1 ? QString("[%1]").arg(from) : QString("[%1:%2]").arg(from).arg(to);
    return bits.mid(first, count);
  }

  void giveValue(Unit& unit, const Record& record) {
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

  Unit makeUnit(const Dut& dut, const Record& record, int index) {
    static const QStringList ops = {"==", "!=", ">", ">=", "<", "<=", ".RE.", ".FE.", ".SC.", "==", ".RE."};
    static const QStringList radices = {"bin", "oct", "dec", "hex"};
    Unit unit;
    unit.name = QString("TU%1").arg(index + 1);
    unit.op = pick(ops);
    unit.radix = unit.op == ".SC." ? "bin" : pick(radices);
    // Some are wider than what one stage of the pipeline compares.
    const bool wide = chance(10);
    const int names = unit.op == ".SC." ? 1 : (wide ? 3 : 1) + below(2);
    for (int i = 0; i < names; ++i) {
      QString word;
      const QStringList bits = select(dut, word, unit.op == ".SC." ? 1 : wide ? 16 : 8);
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

  Term makeTerm(const QVector<Unit>& units, int depth) {
    if (depth == 0 || chance(40)) return Term::of(units, below(units.size()));
    const char sign = "!&|^|"[below(5)];
    const Term first = makeTerm(units, depth - 1);
    return sign == '!' ? first.inverted() : first.joined(sign, makeTerm(units, depth - 1));
  }

  void makeProbes(Core& core, const Dut& dut) {
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
      if ((taken + probe.bits).removeDuplicates() == 0 || probe.bits.size() < 2 || names.contains(probe.signal))
        continue;
      names += probe.signal;
      taken += probe.bits;
      core.probes += probe;
    }
  }

  Core makeCore(const Project& project, const QVector<Record>& records, int index) {
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
    core.findEnableEdges(dut);
    core.depth = chance(4) && !isSlow(project) ? 1024 : 16 << below(4);
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
      const int steps = chance(50) ? 1 : 2 + below(chance(20) ? 5 : 2);
      for (int s = 0; s < steps; ++s) expression.steps += {makeTerm(core.units, 2), chance(60) ? 1 : 2 + below(3)};
      while (expression.maxSteps < steps || chance(20)) expression.maxSteps *= expression.maxSteps < 8 ? 2 : 1;
      int most = 1;
      for (const Step& step : expression.steps) most = std::max(most, step.count);
      while (expression.maxCount < most || chance(20)) expression.maxCount *= 2;
      core.expressions += expression;
    }
    return core;
  }

  std::mt19937 random_;
};

/// Choices of a run that triggers on the rehearsal or, now and then, of one that does not.
bool chooseRun(Generator& generator, const Core& core, const Record& record, bool asInserted, bool triggers,
               RunChoice& choice) {
  for (int tries = 0; tries < 200; ++tries) {
    choice = generator.choice(core, record, asInserted && tries <= 30);
    if (isWorthRunning(core, choice, record) == triggers) return true;
  }
  return false;
}

bool anyToggled(const QVector<Run>& runs) {
  for (const Run& run : runs)
    for (int row = 1; row < run.capture.table.rows(); ++row)
      for (int bit = 0; bit < run.capture.core.probeWidth(); ++bit)
        if (run.capture.probeBit(row, bit) != run.capture.probeBit(row - 1, bit)) return true;
  return false;
}

/// Arms and reads every core, kRunsPerCore times, and more often where nothing worth comparing was captured.
QVector<Run> captureAll(const Project& project, const ost::InsertPlan& plan, const QVector<Record>& rehearsal,
                        Generator& generator, const BenchFiles& files, double noise, Totals& totals) {
  Live live(files, plan, noise, static_cast<quint32>(generator.below(1 << 30)));
  if (plan.jtag.isPrimitive()) live.line.detours = 0.003;
  QVector<Run> runs;
  QString error;
  mustHold(live.reader.identify(error), error);
  const int passes = isSlow(project) ? 1 : kRunsPerCore;
  for (int pass = 0; pass < passes || (pass < 12 && !anyToggled(runs)); ++pass) {
    for (int i = 0; i < project.cores.size(); ++i) {
      const Core& core = project.cores[i];
      const int clock = project.dut->clocks.indexOf(core.clock);
      const Record& record = rehearsal[clock];
      RunChoice choice;
      if (generator.chance(15) && chooseRun(generator, core, record, false, true, choice)) {
        Run run;
        run.core = i;
        run.choice = choice;
        run.outcome = Run::Aborted;
        mustHold(live.reader.arm(i, settingsFor(plan.cores[i], core, choice), error), error);
        runs += run;
      }
      // Some hundred samples without a trigger are enough to ask why.
      const qint64 some = qint64(600 * project.clockPeriods[clock] / (2 * project.tckHalfPeriod)) + 400;
      if (generator.chance(25) && chooseRun(generator, core, record, false, false, choice))
        runs += capture(live, project, plan, i, choice, some);
      if (chooseRun(generator, core, record, pass == 0, true, choice))
        runs += capture(live, project, plan, i, choice, kPatience);
    }
  }
  totals.repeats += live.hub.retries();
  live.end();
  return runs;
}

}  // namespace

void runSeed(quint32 seed, const Settings& settings, Totals& totals) {
  Generator generator(seed);
  Project project = generator.device();
  const BenchFiles files = prepareFolder(settings, QString("seed%1").arg(seed), project);
  const QVector<Record> rehearsal = recordDevice(project, files, 0, kRehearsalRows);
  generator.addCores(project, rehearsal);
  const ost::InsertPlan plan = insert(project, settings, files);
  const QVector<Run> runs = captureAll(project, plan, rehearsal, generator, files, settings.noise, totals);
  const Totals before = totals;
  compareRuns(project, plan, files, runs, totals);
  need(totals.runs > before.runs, "no run was worth comparing");
  need(totals.toggles > before.toggles, "no captured bit ever toggled");
  totals.cores += project.cores.size();
  ++totals.seeds;
  leaveFolder(settings, files);
}

}  // namespace oracle

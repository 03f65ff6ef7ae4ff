// oracle: seeded random projects, captured through JTAG in a simulator and compared with what the model expects of the
// uninstrumented device's own record. Ends with a line of what was compared; the first difference ends it with 1.
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <cstdio>
#include <cstdlib>

#include "platform/insert/capture_map.h"
#include "platform/reader/core_reader.h"
#include "platform/reader/faulty_port.h"
#include "platform/reader/remote_bitbang.h"
#include "platform/rtl/debug_module.h"
#include "tests/sim/oracle/bench.h"
#include "tests/sim/oracle/direct_plan.h"
#include "tests/sim/oracle/generator.h"

namespace oracle {
namespace {

constexpr int kRehearsalRows = 3000;
constexpr int kRunsPerCore = 2;

/// A difference between hardware and model.
struct Difference {
  QString text;
};

struct Settings {
  bool inserted = true;
  bool keep = false;
  double noise = 0;  ///< Probability of a flip on each JTAG line and cycle.
  QString sources, work, tclsh = "tclsh", package;
};

struct Totals {
  qint64 seeds = 0, cores = 0, runs = 0, windows = 0, samples = 0, bits = 0, toggles = 0, pulses = 0, repeats = 0;
};

/// One run of one core: what was chosen and what the core returned.
struct Run {
  int core = 0;
  RunChoice choice;
  ost::Capture capture;
};

void need(bool good, const QString& text) {
  if (!good) throw Broken{text};
}

ost::RunSettings settingsFor(const ost::PlanCore& plan, const Core& core, const RunChoice& choice) {
  ost::RunSettings settings(plan);
  QString error;
  need(settings.setPosition(QString::number(choice.position), error), error);
  need(settings.setWindows(choice.windows, error), error);
  need(settings.setEventCount(choice.eventCount, error), error);
  QStringList enabled;
  for (int i = 0; i < core.expressions.size(); ++i)
    if (choice.enabled[i]) enabled += core.expressions[i].name;
  need(settings.chooseExpressions(enabled.join(','), error), error);
  for (int i = 0; i < core.units.size(); ++i) {
    const Unit &now = choice.units[i], &built = core.units[i];
    if (now.op != built.op || now.digits != built.digits)
      need(settings.setUnit(now.name, now.op, now.digits, error), error);
  }
  return settings;
}

/// Arms and reads every core, kRunsPerCore times, in the simulation that is started here.
QVector<Run> captureAll(const Project& project, const ost::InsertPlan& plan, const QVector<Record>& rehearsal,
                        Generator& generator, const BenchFiles& files, double noise, Totals& totals) {
  QString error;
  for (const char* name : {"/to_sim", "/from_sim"}) {
    const QByteArray file = (files.folder + name).toUtf8();
    unlink(file.constData());
    need(mkfifo(file.constData(), 0600) == 0, "cannot make a FIFO in " + files.folder);
  }
  Simulation simulation({"vvp", "-n", "capture.vvp", "+ostrel_fifo=."}, files.folder, "capture_run.log");
  QVector<Run> runs;
  {
    const auto port = ost::RemoteBitbang::connect({ost::ServerAddress::Fifo, files.folder, 0}, 20, error);
    need(port != nullptr, error);
    ost::FaultyPort line(*port, static_cast<quint32>(generator.below(1 << 30)), noise / 8, noise, noise);
    ost::HubLink hub(line);
    ost::CoreReader reader(hub, plan);
    need(reader.identify(error), error);
    for (int pass = 0; pass < kRunsPerCore; ++pass) {
      for (int i = 0; i < project.cores.size(); ++i) {
        const Core& core = project.cores[i];
        const Record& record = rehearsal[project.dut->clocks.indexOf(core.clock)];
        Run run;
        run.core = i;
        int tries = 0;
        do {
          run.choice = generator.choice(core, record, pass == 0 || tries > 30);
        } while (!isWorthRunning(core, run.choice, record) && ++tries < 200);
        if (tries == 200) continue;
        const ost::RunSettings settings = settingsFor(plan.cores[i], core, run.choice);
        need(reader.arm(i, settings, error), error);
        const ost::WaitResult result = reader.waitUntilDone(i, {120, 400000}, error);
        if (result != ost::WaitResult::Done) {
          ost::CoreStatus status;
          QString ignored;
          reader.status(i, status, ignored);
          throw Difference{QString("core %1, run %2: never completed: %3")
                               .arg(core.name)
                               .arg(pass + 1)
                               .arg(error + ost::explainWaiting(settings, status).join(' '))};
        }
        need(reader.readOut(i, settings, run.capture, error), error);
        runs += run;
      }
    }
    totals.repeats += hub.retries();
  }
  simulation.waitForEnd();
  return runs;
}

/// The plan's probes show the bits that the project asked for, in order; returns the bit names of the sample word.
QStringList checkProbes(const Core& core, const ost::PlanCore& plan) {
  QStringList wordBits;
  for (const ost::NetBit& bit : plan.probeBits) wordBits += bit.name;
  const QVector<QStringList> shown = core.shownProbes();
  if (shown.size() != plan.probes.size())
    throw Difference{
        QString("core %1: %2 probes instead of %3").arg(core.name).arg(plan.probes.size()).arg(shown.size())};
  for (int i = 0; i < shown.size(); ++i) {
    QStringList names;
    for (int position : plan.probes[i].positions) names += wordBits[position];
    if (names != shown[i])
      throw Difference{QString("core %1, probe %2: shows %3 instead of %4")
                           .arg(core.name, plan.probes[i].name, names.join(' '), shown[i].join(' '))};
  }
  return wordBits;
}

void compare(const Core& core, const Run& run, const QString& where, const QStringList& wordBits, const Record& record,
             int armRow, const Expected& expected, Totals& totals) {
  const ost::Capture& capture = run.capture;
  if (capture.windows.size() != expected.windows.size())
    throw Difference{where +
                     QString(": %1 windows instead of %2").arg(capture.windows.size()).arg(expected.windows.size())};
  for (int w = 0; w < expected.windows.size(); ++w) {
    for (int s = 0; s < core.windowSamples; ++s) {
      const ExpectedSample& sample = expected.windows[w][s];
      const int row = capture.windows[w].firstRow + s;
      const QString here = where + QString(", window %1, sample %2").arg(w).arg(s);
      for (int b = 0; b < wordBits.size(); ++b) {
        const char level = record.rows[sample.row][record.columns[wordBits[b]]];
        need(level == '0' || level == '1', here + ": the record has no level for " + wordBits[b]);
        if (capture.probeBit(row, b) != (level == '1'))
          throw Difference{here + QString(", net %1: read %2, the device had %3 (at %4 ps)")
                                      .arg(wordBits[b])
                                      .arg(capture.probeBit(row, b))
                                      .arg(QChar(level))
                                      .arg(record.times[sample.row])};
        ++totals.bits;
        if (s > 0 && capture.probeBit(row, b) != capture.probeBit(row - 1, b)) ++totals.toggles;
      }
      for (int u = 0; core.includeTrigger && u < core.units.size(); ++u)
        if (capture.unitState(row, u) != sample.units[u])
          throw Difference{
              here + QString(", unit %1: state read as %2").arg(core.units[u].name).arg(capture.unitState(row, u))};
      if (core.timestampBits) {
        const quint64 stamp = quint64(sample.row - armRow) & ((quint64(1) << core.timestampBits) - 1);
        if (capture.timestamp(row) != stamp)
          throw Difference{here + QString(": timestamp %1 instead of %2").arg(capture.timestamp(row)).arg(stamp)};
      }
      ++totals.samples;
    }
    ++totals.windows;
  }
  ++totals.runs;
}

/// The output's pulses: active right after edge t + 3 of each trigger's edge t, for the minimum pulse.
void compareTriggerOut(const Core& core, const QVector<int>& triggerRows, const Record& record,
                       const QVector<Level>& levels, const QString& where, Totals& totals) {
  QVector<qint64> rises, falls;
  int activeUntil = -1;
  const int length = qMax(1, core.triggerOutMinPulse);
  for (int row : triggerRows) {
    need(row + 3 + length < record.rows.size(), "the record is too short for the trigger output");
    if (row + 3 > activeUntil) {
      if (activeUntil >= 0) falls += record.times[activeUntil];
      rises += record.times[row + 3];
    }
    activeUntil = row + 3 + length;
  }
  if (activeUntil >= 0) falls += record.times[activeUntil];
  QVector<qint64> seenRises, seenFalls;
  for (const Level& level : levels) {
    const bool active = level.active != core.triggerOutLow;
    if (active) seenRises += level.time;
    if (!active && !seenRises.isEmpty()) seenFalls += level.time;
  }
  if (seenRises != rises || seenFalls != falls)
    throw Difference{where + QString(": the trigger output has %1 pulses at other times than the %2 expected (first at "
                                     "%3 ps, expected at %4 ps)")
                                 .arg(seenRises.size())
                                 .arg(rises.size())
                                 .arg(seenRises.value(0))
                                 .arg(rises.value(0))};
  totals.pulses += rises.size();
}

ost::InsertPlan insertByCommands(const Project& project, const Settings& settings, const BenchFiles& files,
                                 QStringList& sources) {
  QFile script(files.folder + "/project.tcl");
  need(script.open(QIODevice::WriteOnly), "cannot write " + script.fileName());
  script.write(projectScript(project, files.designFile).toUtf8());
  script.close();
  const QString output = files.folder + "/oracle_debug";
  runTool({"env", "TCLLIBPATH=" + settings.package, settings.tclsh, "project.tcl"}, files.folder, "insert.log");
  QFile map(output + "/capture_map.json");
  need(map.open(QIODevice::ReadOnly), "the insertion wrote no capture map; see " + files.folder + "/insert.log");
  ost::InsertPlan plan;
  QString error;
  need(ost::readCaptureMap(map.readAll(), plan, error), error);
  need(plan.cores.size() == project.cores.size(), "the capture map has another number of cores");
  for (const QString& name : QDir(output).entryList({"*.v"}, QDir::Files, QDir::Name)) sources += output + "/" + name;
  return plan;
}

ost::InsertPlan planDirectly(const Project& project, quint32 seed, const BenchFiles& files, QStringList& sources) {
  const ost::InsertPlan plan = directPlan(project, seed);
  auto write = [&](const QString& name, const QByteArray& text) {
    QFile file(files.folder + "/" + name);
    need(file.open(QIODevice::WriteOnly) && file.write(text) == text.size(), "cannot write " + file.fileName());
    sources += name;
  };
  for (const auto& file : ost::coreVerilogFiles()) write(file.first, file.second);
  write("ostrel_debug.v", ost::debugModuleVerilog(plan));
  sources += files.designFile;
  return plan;
}

void runSeed(quint32 seed, const Settings& settings, Totals& totals) {
  Generator generator(seed);
  Project project = generator.device();
  BenchFiles files;
  files.folder = QString("%1/seed%2").arg(settings.work).arg(seed);
  files.designFile = settings.sources + "/tests/sim/designs/" + project.dut->name + ".v";
  files.jtagFile = settings.sources + "/platform/reader/sim/ostrel_jtag_sim.v";
  QDir(files.folder).removeRecursively();
  need(QDir().mkpath(files.folder), "cannot make " + files.folder);
  const QVector<Record> rehearsal = recordDevice(project, files, kRehearsalRows);
  generator.addCores(project, rehearsal);

  QStringList sources;
  const ost::InsertPlan plan = settings.inserted ? insertByCommands(project, settings, files, sources)
                                                 : planDirectly(project, seed, files, sources);
  QFile bench(files.folder + "/capture_tb.v");
  need(bench.open(QIODevice::WriteOnly), "cannot write the bench");
  bench.write(captureBench(project, plan, settings.inserted));
  bench.close();
  runTool(QStringList{"iverilog", "-g2005", "-o", "capture.vvp", "-s", "tb", "capture_tb.v", files.jtagFile} + sources,
          files.folder, "capture_build.log");
  const QVector<Run> runs = captureAll(project, plan, rehearsal, generator, files, settings.noise, totals);
  need(!runs.isEmpty(), "no run was worth comparing");

  QVector<QStringList> wordBits;
  QVector<QVector<qint64>> arms;
  QVector<int> runsOf(project.cores.size(), 0);
  QVector<QVector<int>> triggerRows(project.cores.size());
  for (int i = 0; i < project.cores.size(); ++i) {
    wordBits += checkProbes(project.cores[i], plan.cores[i]);
    arms += armTimes(files, i);
  }
  const qint64 togglesBefore = totals.toggles;
  int rows = kRehearsalRows;
  QVector<Record> records = rehearsal;
  for (const Run& run : runs) {
    const Core& core = project.cores[run.core];
    const int clock = project.dut->clocks.indexOf(core.clock), number = runsOf[run.core]++;
    const QString where = QString("core %1, run %2").arg(core.name).arg(number + 1);
    need(number < arms[run.core].size(), where + ": the core's arm was not seen");
    Expected expected;
    int armRow = -1;
    // The record grows until it holds the whole run and the trigger output behind it.
    for (;;) {
      armRow = records[clock].times.indexOf(arms[run.core][number]);
      if (armRow >= 0) {
        expected = expectedCapture(core, run.choice, records[clock], armRow);
        if (expected.complete && expected.rowsSeen + 16 < records[clock].rows.size()) break;
      }
      need(rows < 4000000, where + ": the model sees no end of the run");
      rows *= 3;
      records = recordDevice(project, files, rows);
    }
    triggerRows[run.core] += expected.triggerRows;
    compare(core, run, where, wordBits[run.core], records[clock], armRow, expected, totals);
  }
  for (int i = 0; i < project.cores.size(); ++i) {
    if (project.cores[i].triggerOut)
      compareTriggerOut(project.cores[i], triggerRows[i], records[project.dut->clocks.indexOf(project.cores[i].clock)],
                        triggerOutLevels(files, i), "core " + project.cores[i].name, totals);
  }
  need(totals.toggles > togglesBefore, "no captured bit ever toggled");
  totals.cores += project.cores.size();
  ++totals.seeds;
  if (!settings.keep) QDir(files.folder).removeRecursively();
}

int runAll(int first, int count, const Settings& settings) {
  Totals totals;
  for (int seed = first; seed < first + count; ++seed) {
    try {
      runSeed(seed, settings, totals);
    } catch (const Difference& difference) {
      printf("seed %d DIFFERS: %s\n", seed, qPrintable(difference.text));
      return 1;
    } catch (const Broken& broken) {
      printf("seed %d is broken: %s\n", seed, qPrintable(broken.text));
      return 1;
    }
  }
  printf("%lld seeds agree: %lld cores, %lld runs, %lld windows, %lld samples, %lld bits (%lld toggles), ",
         totals.seeds, totals.cores, totals.runs, totals.windows, totals.samples, totals.bits, totals.toggles);
  printf("%lld trigger pulses, %lld repeats on the line\n", totals.pulses, totals.repeats);
  return 0;
}

}  // namespace
}  // namespace oracle

int main(int argc, char** argv) {
  oracle::Settings settings;
  int first = 1, count = 1;
  for (int i = 1; i < argc; ++i) {
    const QString word = argv[i];
    const QString value = i + 1 < argc ? argv[i + 1] : "";
    if (word == "-direct")
      settings.inserted = false;
    else if (word == "-keep")
      settings.keep = true;
    else if (++i >= argc)
      return fprintf(stderr, "oracle: bad word '%s'\n", qPrintable(word)), 2;
    else if (word == "-first")
      first = value.toInt();
    else if (word == "-seeds")
      count = value.toInt();
    else if (word == "-sources")
      settings.sources = QDir(value).absolutePath();
    else if (word == "-work")
      settings.work = QDir(value).absolutePath();
    else if (word == "-package")
      settings.package = QDir(value).absolutePath();
    else if (word == "-noise")
      settings.noise = value.toDouble();
    else if (word == "-tclsh")
      settings.tclsh = value;
    else
      return fprintf(stderr, "oracle: bad word '%s'\n", qPrintable(word)), 2;
  }
  return oracle::runAll(first, count, settings);
}

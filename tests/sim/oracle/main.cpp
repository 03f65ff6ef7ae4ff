// ost_oracle: seeded random projects and directed scenes, captured through JTAG in a simulator and compared with what
// the model expects of the uninstrumented device's own record. Ends with a line of what was compared; the first
// difference ends it with 1.
#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <algorithm>
#include <cstdio>

#include "tests/sim/oracle/generator.h"
#include "tests/sim/oracle/insertion.h"
#include "tests/sim/oracle/runs.h"
#include "tests/sim/oracle/scenes.h"

namespace oracle {
namespace {

constexpr int kRehearsalRows = 3000;
constexpr int kRunsPerCore = 2;    ///< One where TCK is so slow that each takes long.
constexpr int kPatience = 400000;  ///< TCK cycles for a run that is expected to trigger.

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
  QVector<Run> runs;
  QString error;
  mustHold(live.reader.identify(error), error);
  double fastest = project.clockPeriods[0];
  for (double period : project.clockPeriods) fastest = std::min(fastest, period);
  const int passes = project.tckHalfPeriod > 5 * fastest ? 1 : kRunsPerCore;
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
  if (!settings.keep && !settings.reuse) QDir(files.folder).removeRecursively();
}

int runAll(int first, int count, bool scenes, const Settings& settings) {
  Totals totals;
  QString name;
  try {
    for (int seed = first; seed < first + count; ++seed) {
      name = QString("seed %1").arg(seed);
      runSeed(static_cast<quint32>(seed), settings, totals);
    }
    name = "scene";
    if (scenes) playScenes(settings, totals);
    need(settings.noise == 0 || totals.repeats > 0, "the noise disturbed nothing");
  } catch (const Difference& difference) {
    printf("%s DIFFERS: %s\n", qPrintable(name), qPrintable(difference.text));
    return 1;
  } catch (const Broken& broken) {
    printf("%s is broken: %s\n", qPrintable(name), qPrintable(broken.text));
    return 1;
  }
  printf("%lld seeds agree: %lld cores, %lld runs, %lld windows, %lld samples, %lld bits (%lld toggles), ",
         totals.seeds, totals.cores, totals.runs, totals.windows, totals.samples, totals.bits, totals.toggles);
  printf("%lld trigger pulses, %lld runs without trigger, %lld aborted, %lld repeats on the line\n", totals.pulses,
         totals.untriggered, totals.aborted, totals.repeats);
  return 0;
}

}  // namespace
}  // namespace oracle

int main(int argc, char** argv) {
  const QCoreApplication application(argc, argv);
  QCommandLineParser words;
  words.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
  words.addHelpOption();
  words.addOptions({{"sources", "Root of the source tree.", "folder", "."},
                    {"package", "Where Tcl finds the package.", "folder"},
                    {"work", "Where projects and simulations are written.", "folder"},
                    {"first", "The first seed.", "number", "1"},
                    {"seeds", "How many.", "number", "0"},
                    {"scenes", "Play the directed scenes."},
                    {"noise", "Probability of a flip on TDI and TDO.", "rate", "0"},
                    {"core", "Verilog in place of files of the same name in the insertion.", "folder"},
                    {"keep", "Leave the files of seeds that agree."},
                    {"reuse", "Take insertions that are there."}});
  words.process(application);
  const auto folder = [&](const char* name) {
    return words.isSet(name) ? QDir(words.value(name)).absolutePath() : QString();
  };
  oracle::Settings settings;
  settings.sources = QDir(words.value("sources")).absolutePath();
  settings.package = folder("package");
  settings.work = folder("work");
  settings.core = folder("core");
  settings.noise = words.value("noise").toDouble();
  settings.keep = words.isSet("keep");
  settings.reuse = words.isSet("reuse");
  const int seeds = words.value("seeds").toInt();
  if (settings.work.isEmpty() || settings.package.isEmpty() || (seeds <= 0 && !words.isSet("scenes")))
    words.showHelp(2);
  return oracle::runAll(words.value("first").toInt(), seeds, words.isSet("scenes"), settings);
}

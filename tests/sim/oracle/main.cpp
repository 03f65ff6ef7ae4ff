// ost_oracle: seeded random projects and directed scenes, captured through JTAG in a simulator and compared with what
// the model expects of the uninstrumented device's own record. Ends with a line of what was compared; the first
// difference ends it with 1.
#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <cstdio>

#include "tests/sim/oracle/runs.h"

namespace oracle {
namespace {

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
                    {"jtag", "The way to the chip: pins, bscane2 or gw_jtag.", "way", "pins"},
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
  settings.jtag = words.value("jtag");
  settings.keep = words.isSet("keep");
  settings.reuse = words.isSet("reuse");
  const int seeds = words.value("seeds").toInt();
  if (settings.work.isEmpty() || settings.package.isEmpty() || (seeds <= 0 && !words.isSet("scenes")))
    words.showHelp(2);
  return oracle::runAll(words.value("first").toInt(), seeds, words.isSet("scenes"), settings);
}

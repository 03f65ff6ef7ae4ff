// The run of tclsh, and a look at what came of it.
#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QSet>

#include "platform/plan/capture_map.h"
#include "tests/sim/oracle/runs.h"

namespace oracle {
namespace {

QString outputFolder(const BenchFiles& files) {
  return files.folder + "/oracle_debug";
}

/// 0 configuration bits, 1 distributed RAM, 2 block RAM.
int tableStore(const Expression& expression, const Core& core) {
  QVector<int> units;
  for (const Step& step : expression.steps) units += step.term.units;
  if (!expression.ebr && QSet<int>(units.begin(), units.end()).size() <= 4) return 0;
  return expression.ebr || core.distRamDisable ? 2 : 1;
}

QStringList parameters(const QString& verilog, const QString& name) {
  QStringList values;
  auto match = QRegularExpression("\\." + name + "\\((\\d+)\\)").globalMatch(verilog);
  while (match.hasNext()) values += match.next().captured(1);
  return values;
}

/// What simulation cannot show: kinds of memory, and the radix of the reader's displays.
void checkWritten(const Project& project, const ost::InsertPlan& plan, const BenchFiles& files) {
  const QString verilog = contentsOf(outputFolder(files) + "/ostrel_debug.v");
  QStringList samples, tables;
  mustHold(plan.cores.size() == project.cores.size(), "the capture map has another number of cores");
  for (int i = 0; i < project.cores.size(); ++i) {
    const Core& core = project.cores[i];
    samples += QString::number(core.dram && !core.distRamDisable);
    for (const Expression& expression : core.expressions) tables += QString::number(tableStore(expression, core));
    mustHold(QStringList({"bin", "oct", "dec", "hex"}).indexOf(core.displayRadix) == int(plan.cores[i].displayRadix),
             "core " + core.name + ": another display radix in the capture map");
  }
  mustHold(parameters(verilog, "DISTRIBUTED") == samples, "sample memories of another kind were built");
  mustHold(parameters(verilog, "STORE") == tables, "expression memories of another kind were built");
}

}  // namespace

BenchFiles prepareFolder(const Settings& settings, const QString& name, const Project& project) {
  return prepareFolder(settings, name, project.dut->files);
}

BenchFiles prepareFolder(const Settings& settings, const QString& name, const QStringList& design) {
  BenchFiles files;
  files.folder = settings.work + "/" + name;
  for (const QString& file : design) files.design += settings.sources + "/" + file;
  files.jtagFile = settings.sources + "/platform/jtag/sim/ostrel_jtag_sim.v";
  if (!settings.reuse) QDir(files.folder).removeRecursively();
  need(QDir().mkpath(files.folder), "cannot make " + files.folder);
  return files;
}

void leaveFolder(const Settings& settings, const BenchFiles& files) {
  if (!settings.keep && !settings.reuse) QDir(files.folder).removeRecursively();
}

ost::InsertPlan insertScript(const QString& script, const Settings& settings, const BenchFiles& files) {
  const QString map = outputFolder(files) + "/capture_map.json";
  if (!QFile::exists(map)) {
    writeFile(files.folder + "/project.tcl", script.toUtf8());
    runTool({"env", "TCLLIBPATH=" + settings.package, "tclsh", "project.tcl"}, files.folder, "insert.log");
  }
  ost::InsertPlan plan;
  QString error;
  need(ost::readCaptureMap(contentsOf(map), plan, error), error);
  return plan;
}

ost::InsertPlan insert(const Project& project, const Settings& settings, const BenchFiles& files) {
  const ost::InsertPlan plan = insertScript(projectScript(project, settings.sources, settings.jtag), settings, files);
  checkWritten(project, plan, files);
  compileBench(project, plan, settings, files);
  return plan;
}

void compileBench(const Project& project, const ost::InsertPlan& plan, const Settings& settings,
                  const BenchFiles& files) {
  compileText(captureBench(project, plan), plan, settings, files);
}

void compileText(const QByteArray& bench, const ost::InsertPlan& plan, const Settings& settings,
                 const BenchFiles& files) {
  writeFile(files.folder + "/capture_tb.v", bench);
  QStringList sources;
  for (const QString& name : QDir(outputFolder(files)).entryList({"*.v"}, QDir::Files, QDir::Name)) {
    const QString other = settings.core + "/" + name;
    sources += !settings.core.isEmpty() && QFile::exists(other) ? other : outputFolder(files) + "/" + name;
  }
  if (plan.jtag.isPrimitive())
    sources << settings.sources + "/tests/sim/device_tap.v" << settings.sources + "/examples/openocd/other_device.v";
  runTool(QStringList{"iverilog", "-g2005", "-o", "capture.vvp", "-s", "tb", "capture_tb.v", files.jtagFile} + sources,
          files.folder, "capture_build.log");
}

}  // namespace oracle

// A project inserted by the real Tcl commands; test benches, their simulation with Icarus Verilog, and the records that
// they write.
#pragma once

#include <QProcess>

#include "platform/plan/insert_plan.h"
#include "tests/sim/oracle/model.h"

namespace oracle {

// Whole files; throw Broken.
void writeFile(const QString& name, const QByteArray& text);
QByteArray contentsOf(const QString& name);

/// Runs a program in `folder` to its end; its output goes to `log` there. Throws when it fails.
void runTool(const QStringList& words, const QString& folder, const QString& log);

/// A simulation in the background; killed with the object.
class Simulation {
 public:
  Simulation(const QStringList& words, const QString& folder, const QString& log);
  ~Simulation();
  void waitForEnd();

 private:
  QProcess process_;
};

struct BenchFiles {
  QString folder;      ///< Of this project.
  QStringList design;  ///< The device's Verilog.
  QString jtagFile;    ///< ostrel_jtag_sim.v
};

struct Settings {
  bool keep = false;   ///< Leave each project's folder behind.
  bool reuse = false;  ///< Use an existing insertion; implies `keep`.
  double noise = 0;    ///< Probability of a flip on each JTAG line and cycle.
  QString sources, work, package,
      core;               ///< `core`: folder whose ostrel_*.v are simulated in place of the inserted ones.
  QString jtag = "pins";  ///< The way to the chip: pins, bscane2 or gw_jtag.
};

/// Makes the folder `name` below the work folder, empty but for an insertion to be used again.
BenchFiles prepareFolder(const Settings& settings, const QString& name, const Project& project);
/// The same with the device's files, relative to the sources.
BenchFiles prepareFolder(const Settings& settings, const QString& name, const QStringList& design);
/// Removes it, unless the settings say otherwise.
void leaveFolder(const Settings& settings, const BenchFiles& files);
/// Inserts and compiles capture.vvp. Throws Difference when the plan or the written core is not what was asked for.
ost::InsertPlan insert(const Project& project, const Settings& settings, const BenchFiles& files);
/// Runs a script that inserts a project "oracle" unless that has been done.
ost::InsertPlan insertScript(const QString& script, const Settings& settings, const BenchFiles& files);
/// Compiles capture.vvp from a bench whose top is `tb`.
void compileText(const QByteArray& bench, const ost::InsertPlan& plan, const Settings& settings,
                 const BenchFiles& files);
/// Compiles capture.vvp once more, for another rate of TCK.
void compileBench(const Project& project, const ost::InsertPlan& plan, const Settings& settings,
                  const BenchFiles& files);

/// The uninstrumented device for `rows` edges of its fastest clock from a time (ps) on: one record for each clock.
QVector<Record> recordDevice(const Project& project, const BenchFiles& files, qint64 fromTime, int rows);

/// The bench of the instrumented device. Its clocks stop from the rising TCK edge number +pause_from on to
/// number +pause_to.
QByteArray captureBench(const Project& project, const ost::InsertPlan& plan);

/// A run as the core saw it: the time (ps) of its edge 0, and of its end.
struct RunSpan {
  qint64 from, to;
};
QVector<RunSpan> runSpans(const BenchFiles& files, int core);
/// Changes of a core's trigger output; with two names (port and net) of the second one.
struct Level {
  qint64 time;
  bool active;
};
QVector<Level> triggerOutLevels(const BenchFiles& files, int core, int name);

}  // namespace oracle

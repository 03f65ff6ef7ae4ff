// Test benches, their simulation with Icarus Verilog, and the records that they write.
#pragma once

#include <QProcess>

#include "platform/plan/insert_plan.h"
#include "tests/sim/oracle/model.h"

namespace oracle {

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

/// The uninstrumented device for `rows` edges of its fastest clock from a time (ps) on: one record for each clock.
QVector<Record> recordDevice(const Project& project, const BenchFiles& files, qint64 fromTime, int rows);

/// The bench of the instrumented device. Its clocks stand still from the rising TCK edge number +pause_from on to
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

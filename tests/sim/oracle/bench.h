// Test benches, their simulation with Icarus Verilog, and the records that they write.
#pragma once

#include <memory>

#include "platform/insert/insert_plan.h"
#include "tests/sim/oracle/model.h"

namespace oracle {

/// Thrown for everything that is no difference but a broken run: a tool that fails, a file that is missing.
struct Broken {
  QString text;
};

/// Runs a program in `folder` to its end; its output goes to `log` there. Throws when it fails.
void runTool(const QStringList& words, const QString& folder, const QString& log);

/// A simulation in the background; killed with the object.
class Simulation {
 public:
  Simulation(const QStringList& words, const QString& folder, const QString& log);
  ~Simulation();
  void waitForEnd();

 private:
  int pid_ = -1;
};

struct BenchFiles {
  QString folder;      ///< Of this seed.
  QString designFile;  ///< The device's Verilog.
  QString jtagFile;    ///< ostrel_jtag_sim.v
};

/// The uninstrumented device for `rows` edges of its fastest clock: one record for each clock.
QVector<Record> recordDevice(const Project& project, const BenchFiles& files, int rows);

/// The text of the bench that holds the core beside the uninstrumented device, joined by hierarchical names, or (with
/// `inserted`) the instrumented device alone.
QByteArray captureBench(const Project& project, const ost::InsertPlan& plan, bool inserted);

/// The times (ps) at which core `index` was armed (its edge 0), in order; and of the changes of its trigger output.
QVector<qint64> armTimes(const BenchFiles& files, int index);
struct Level {
  qint64 time;
  bool active;
};
QVector<Level> triggerOutLevels(const BenchFiles& files, int index);

}  // namespace oracle

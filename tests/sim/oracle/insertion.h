// A project inserted by the real Tcl commands, and its bench compiled.
#pragma once

#include "tests/sim/oracle/bench.h"

namespace oracle {

struct Settings {
  bool keep = false;   ///< Leave each project's folder behind.
  bool reuse = false;  ///< Take an insertion that lies there; implies `keep`.
  double noise = 0;    ///< Probability of a flip on each JTAG line and cycle.
  QString sources, work, package,
      core;  ///< `core`: folder whose ostrel_*.v are simulated in place of the inserted ones.
};

/// Makes the folder `name` below the work folder, empty but for an insertion to be used again.
BenchFiles prepareFolder(const Settings& settings, const QString& name, const Project& project);
/// Inserts and compiles capture.vvp. Throws Difference when the plan or the written core is not what was asked for.
ost::InsertPlan insert(const Project& project, const Settings& settings, const BenchFiles& files);
/// Compiles capture.vvp once more, for another rate of TCK.
void compileBench(const Project& project, const ost::InsertPlan& plan, const Settings& settings,
                  const BenchFiles& files);

}  // namespace oracle

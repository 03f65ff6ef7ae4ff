// Runs a plan's debug module under Icarus Verilog: writes the script of what happens on the JTAG pins, simulates, and
// takes the replies and records apart.
#pragma once

#include <QTemporaryDir>
#include <string>
#include <vector>

#include "tests/sim/core/model.h"

namespace ost::sim {

struct Timing {
  int tckHalf = 20000;                  ///< Picoseconds.
  std::vector<int> clockHalf = {5000};  ///< Of each core's sample clock.
  int seed = 1;
};

class Simulation {
 public:
  /// Throws std::runtime_error with the compiler's output when the generated Verilog does not compile.
  Simulation(const InsertPlan& plan, const Timing& timing);

  // The script. Each of the reading ones returns the index of its line in `replies()`.
  void write(Command op, int core, int tag = 0, int address = 0, const Bits& payload = Bits());
  void writeBits(const Bits& bits);  ///< A DR scan of these bits as they are.
  int read(int bits);
  int raw(const Bits& tms, const Bits& tdi);
  int until(int core, int mask, int value, int looks);
  void wait(qint64 picoseconds);
  void stopClock(int core);
  void startClock(int core);

  /// CONFIG, the tables in memory, ARM.
  void configure(int core, const Settings& settings);
  void arm(int core, int tag) { write(kArm, core, tag); }
  /// Reads status and all words; takes two replies, the first's index is returned.
  int readOut(int core, int tag);

  /// Simulates the script; throws when it does not come to its end.
  void run();
  const Bits& reply(int index) const { return replies_.at(index); }
  std::vector<std::vector<Edge>> record(int core) const;

  /// The windows out of a readOut(), or why it cannot be believed.
  std::vector<std::vector<Bits>> windows(int core, int tag, const Settings& settings, int reply, std::string& error);
  const InsertPlan& plan() const { return plan_; }

 private:
  InsertPlan plan_;
  QTemporaryDir folder_;
  std::string script_;
  int readings_ = 0;
  std::vector<Bits> replies_;
};

/// A reply of the core's status word.
int statusReplyBits(const PlanCore& core);

}  // namespace ost::sim

// Runs on a live simulation, and their comparison with what the model expects of the uninstrumented device's record.
#pragma once

#include <memory>
#include <random>

#include "platform/jtag/remote_bitbang.h"
#include "platform/jtag/tap_driver.h"
#include "platform/reader/core_reader.h"
#include "tests/sim/oracle/bench.h"

namespace oracle {

/// Thrown for a difference between hardware and model.
struct Difference {
  QString text;
};

void need(bool good, const QString& text);  ///< Throws Broken.
/// Throws Difference. `error`: what follows `text`, when `right` is what sets it.
void mustHold(bool right, const QString& text, const QString& error = QString());

/// What was compared.
struct Totals {
  qint64 seeds = 0, cores = 0, runs = 0, windows = 0, samples = 0, bits = 0, toggles = 0, pulses = 0, repeats = 0;
  qint64 untriggered = 0, aborted = 0;
  qint64 unknown = 0;  ///< Bits that were x or z in the device, and had to be captured as 0.
};

/// A line that flips bits at random, as a long cable does, or one when told to: the reader repeats what was disturbed
/// and delivers no wrong sample.
class FaultyLine : public ost::JtagPort {
 public:
  /// `noise`: probability of a flip on TDI and TDO in each cycle; an eighth of it on TMS.
  FaultyLine(ost::JtagPort& port, quint32 seed, double noise) : port_(port), random_(seed), noise_(noise) {}
  int untilFlip = -1;       ///< Cycles before the one in which TDI is inverted; -1 for none.
  double detours = 0;       ///< Probability, at a bit of a scan, of a pause; at an idle cycle, of a scan without a bit.
  qint64 detourCycles = 0;  ///< Spent in them so far.
  bool run(const QByteArray& tms, const QByteArray& tdi, QByteArray* tdo, QString& error) override;
  bool flush(QString& error) override { return port_.flush(error); }

 private:
  QByteArray disturbed(QByteArray levels, double rate);
  /// The cycles with detours between them; `counts` tells which cycles the caller asked for.
  void takeDetours(QByteArray& tms, QByteArray& tdi, QByteArray& counts);

  int state_ = 0;  ///< Of the TAPs, as device_tap.v numbers them.
  ost::JtagPort& port_;
  std::mt19937 random_;
  double noise_;
};

/// The bench in simulation, with the reader at its JTAG pins.
class Live {
 public:
  Live(const BenchFiles& files, const ost::InsertPlan& plan, double noise = 0, quint32 seed = 0,
       const QStringList& arguments = {}, ost::TapInstruction instruction = {0, 0});
  void open();  ///< Throws Difference.
  qint64 cycles() const { return hub.cycles() + line.detourCycles; }
  /// Closes the line and waits for the simulation's end.
  void end();

 private:
  Simulation simulation_;
  std::unique_ptr<ost::Connection> connection_;
  std::unique_ptr<ost::RemoteBitbang> port_;

 public:
  FaultyLine line;
  ost::TapDriver tap;
  ost::HubLink hub;
  ost::CoreReader reader;
};

/// One run of one core: what was chosen and what became of it.
struct Run {
  enum Outcome { Done, Untriggered, Aborted };
  int core = 0;
  RunChoice choice;
  Outcome outcome = Done;
  ost::Capture capture;
  QStringList reasons;    ///< Untriggered: what the reader says of it.
  qint64 readCycles = 0;  ///< TCK cycles of the whole read-out.
  qint64 waitedTime = 0;  ///< For how long (ps) the run went on: at most when done, at least when untriggered.
};

ost::RunSettings settingsFor(const ost::PlanCore& plan, const Core& core, const RunChoice& choice);
/// Arms a core, waits for `patience` cycles of TCK, and reads the capture or the reasons why there is none.
Run capture(Live& live, const Project& project, const ost::InsertPlan& plan, int core, const RunChoice& choice,
            qint64 patience);
/// `runs` are all runs of the simulation that has ended, in order.
void compareRuns(const Project& project, const ost::InsertPlan& plan, const BenchFiles& files, const QVector<Run>& runs,
                 Totals& totals);

// What is run; each throws Difference.
void runSeed(quint32 seed, const Settings& settings, Totals& totals);  ///< One random project.
/// What random projects do not reach: directed scenes. The text of a difference names the scene.
void playScenes(const Settings& settings, Totals& totals);
/// On a device whose nets are x or z at times: what is known is captured as it is, and the simulation names the rest.
void unknownLevels(const Settings& settings, Totals& totals);
/// A serdes block that loses lock, has glitches, stopped clocks and resets, seen by the serdes core.
void serdesBlock(const Settings& settings);
/// The Wishbone master, without an insertion.
void wishboneMaster(const Settings& settings, Totals& totals);

}  // namespace oracle

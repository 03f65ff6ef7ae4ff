// A project of debug cores as its author knows it: names, options and trigger terms, nothing of the hardware. The
// oracle, the Tcl script and the test bench are all made from this.
#pragma once

#include <QHash>
#include <QString>
#include <QStringList>
#include <QVector>
#include <functional>

namespace oracle {

/// Thrown for everything that is not a difference but a broken run: a tool that fails, a file that is missing.
struct Broken {
  QString text;
};

/// A net of a device under test, as `[left:right]` or a scalar.
struct Net {
  QString name;  ///< Hierarchical, with "/".
  int left = 0, right = 0;
  bool isVector = false;
  int width() const { return qAbs(left - right) + 1; }
  /// Names of the bits, leftmost first.
  QStringList bits() const;
};

struct Port {
  QString name;
  int width;
  QString drive;  ///< Of an input: Verilog over `random`; when empty, bits of it.
};

struct Dut {
  QString name;  ///< Of the top module.
  QStringList files, clocks;
  QVector<Port> inputs;  ///< Driven at random; not clocks nor `rst`.
  QVector<Port> others;  ///< Outputs, and inouts that the device alone drives.
  QVector<Net> nets;
  QStringList enables;                   ///< Single bits that make sensible enables.
  QHash<QString, QString> enableClocks;  ///< Of those that are registers.
  /// An input, or a register of another clock: as an enable it counts two edges later.
  bool isForeign(const QString& enable, const QString& clock) const;
};
/// From words with blanks between them, nets as "name[left:right]", enables as "name@clock" or "name", and ports as
/// "name:width drive; ...".
Dut dutOf(const char* name, const QStringList& files, const char* clocks, const char* inputs, const char* others,
          const char* nets, const char* enables);
const QVector<Dut>& duts();

struct Unit {
  QString name;
  QStringList signalNames;  ///< As given in Tcl.
  QStringList bits;         ///< Single bits, leftmost first.
  QString op;
  QString radix;  ///< bin, oct, dec or hex.
  QString digits;
};

/// A term over the units of a core.
struct Term {
  QString text;
  QVector<int> units;  ///< Those that it names.
  std::function<bool(const QVector<bool>& states)> holds;

  static Term of(const QVector<Unit>& units, int unit);
  Term inverted() const;
  Term joined(char sign, const Term& other) const;  ///< '&', '|' or '^'
};

struct Step {
  Term term;
  int count = 1;
};

struct Expression {
  QString name;
  bool ebr = false;
  int maxSteps = 1, maxCount = 1;
  QVector<Step> steps;
  QString text() const;
};

struct Probe {
  QString signal;    ///< As given in Tcl; a member of `bus` when that is set.
  QStringList bits;  ///< Leftmost first.
};

struct Core {
  QString name;
  QString clock;
  QString sampleEnable, triggerEnable;  ///< Empty: none.
  bool sampleEnableLow = false, triggerEnableLow = false;
  int sampleEnableEdges = 0, triggerEnableEdges = 0;  ///< For which an enable is on its way to the core.
  void findEnableEdges(const Dut& dut);
  QVector<Probe> probes;
  int busFrom = -1, busTo = -1;  ///< Probes that are grouped as BUS1.
  int depth = 16;
  bool dram = false, distRamDisable = false;
  int timestampBits = 0;
  bool multiple = false;
  int windowSamples = 16, windows = 1;
  bool includeTrigger = false;
  int eventCount = 0;  ///< 0: no event counter.
  QString displayRadix = "bin";
  enum TriggerOut { None, Io, Net, Both };
  TriggerOut triggerOut = None;
  bool triggerOutLow = false;
  int triggerOutMinPulse = 0;
  QVector<Unit> units;
  QVector<Expression> expressions;
  /// The probes with the bus in its members' place, each as its bits, leftmost first.
  QVector<QStringList> shownProbes() const;
};

struct Project {
  const Dut* dut = nullptr;
  QVector<double> clockPeriods;  ///< ns, for each clock of the device.
  double tckHalfPeriod = 10;     ///< ns
  int clockStart = 0;            ///< ns for which the clocks are x
  QVector<Core> cores;
};

/// What a run may change.
struct RunChoice {
  int position = 0;  ///< Samples before the trigger.
  int windows = 1;
  int eventCount = 1;
  QVector<bool> enabled;  ///< For each expression.
  QVector<Unit> units;    ///< With other operators and digits.
};

/// The Tcl commands that make the project and insert it.
QString projectScript(const Project& project, const QString& sourceFolder, const QString& jtag);

}  // namespace oracle

// The plan of an insertion: everything that the hardware and its reader need to know, resolved to single bits of the
// design. Made from the project by the planner; read by the rules, the Verilog generator, the netlist change and the
// capture map. Nothing in it refers back to the project.
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVector>
#include <optional>

#include "platform/netlist/net_bit.h"
#include "platform/plan/probed_instance.h"
#include "platform/plan/serdes_plan.h"
#include "platform/plan/wishbone_plan.h"
#include "platform/text/enum_names.h"
#include "platform/trigger/trigger_words.h"

namespace ost {

/// A command of the hub names its core with 8 bits, and with as many the expression of a table.
constexpr int kMaxPlanCores = 256;
constexpr int kMaxPlanExpressions = 256;  ///< Of a core.
/// What a reader of the plan can hold: bits of nets that all cores together trace or compare, mentions of them in
/// probes and units, and samples of a core, which are more than any device has and fit a QByteArray as text.
constexpr int kMaxPlanBits = 1 << 20;
constexpr int kMaxPlanIndexes = 1 << 22;
constexpr qint64 kMaxPlanSampleBits = 1 << 28;

/// The net that a probe shows, or a part of it, as the source declares it.
struct DeclaredNet {
  QStringList scopes;  ///< The instances and generate blocks that hold it, from below the top, without escapes.
  QString name;        ///< Without its scopes and escapes; empty: the probe is not a part of one net.
  bool isVector = false;
  int left = 0, right = 0;  ///< Of a vector: the declared indices of the probe's leftmost and rightmost bits.
};

/// An entry of the trace list as the user sees it: bits in display order, leftmost (most significant) first.
struct PlanProbe {
  QString name;
  QVector<int> positions;  ///< Index of each bit in PlanCore::probeBits.
  EnumNames names{};       ///< Of its values, when it is a net of an enumerated type.
  DeclaredNet net{};       ///< Without a name also in plans out of older capture maps.
};

/// Hardware class of a unit. Operators change at run time within a class; another class needs a new insertion.
enum class UnitClass {
  Match,   ///< == != .RE. .FE. with don't-cares
  Order,   ///< == != < <= > >=
  Serial,  ///< .SC.
};

struct PlanUnit {
  QString name;
  UnitClass unitClass = UnitClass::Match;
  Operator op = Operator::Equal;
  Radix radix = Radix::Bin;
  QString valueText;
  int width = 1;        ///< Bits compared; the pattern's length for Serial.
  QVector<int> inputs;  ///< Index into PlanCore::triggerBits, least significant first; one entry for Serial.
  QByteArray value;     ///< `width` characters '0'/'1', least significant first ('0' where don't-care).
  QByteArray mask;      ///< '1' = compared (or watched for edges), least significant first.
  EnumNames names{};    ///< Of the values of its signal, when that is a net of an enumerated type.
};

/// One step of a sequence: a truth table over the expression's units, to be met `count` times.
struct PlanStep {
  QByteArray truthTable;  ///< 2^units characters '0'/'1'; the index has unit i of the expression at bit i.
  int count = 1;
};

struct PlanExpression {
  QString name;
  QString text;
  bool blockRam = false;     ///< EBR; otherwise slices.
  int maxSequenceDepth = 1;  ///< Steps built into the hardware.
  int maxEventCount = 1;     ///< Largest step count the hardware can hold.
  QVector<int> units;        ///< Index into PlanCore::units, in the order of the truth table's address bits.
  QVector<PlanStep> steps;

  int tableRows() const { return 1 << units.size(); }
};

/// With OutNetType BOTH the port has the given name; as in Verilog a net beside it needs one of its own, it gets this.
constexpr char kTriggerOutNetSuffix[] = "_net";

struct PlanCore {
  QString name;
  NetBit sampleClock;
  bool hasSampleEnable = false;
  NetBit sampleEnable;
  bool sampleEnableActiveLow = false;
  bool sampleEnableForeign = false;  ///< Of another clock or an input of the top: it passes two flip-flops.
  bool hasTriggerEnable = false;
  NetBit triggerEnable;
  bool triggerEnableActiveLow = false;
  bool triggerEnableForeign = false;

  QVector<NetBit> probeBits;    ///< Each traced bit once; index 0 is bit 0 of the sample word's probe field.
  QVector<PlanProbe> probes;    ///< In trace order, buses flattened to their own name; references point at shared bits.
  QVector<NetBit> triggerBits;  ///< Each bit that a unit compares, once.
  QVector<ProbedInstance> instances;  ///< That can be replayed. Not part of the hash.

  Radix displayRadix = Radix::Bin;  ///< The core's DefaultRadix, in which a reader shows vectors.

  int depth = 1024;  ///< Samples, a power of two.
  bool distributedRam = false;
  bool distRamDisabled = false;
  int timestampBits = 0;  ///< 0 = no timestamps.
  bool includeTrigger = false;
  int windows = 1;           ///< Windows of one capture.
  int windowSamples = 1024;  ///< Samples of a window, a power of two; windows * windowSamples <= depth.

  QVector<PlanUnit> units;
  QVector<PlanExpression> expressions;
  bool eventCounter = false;
  int eventCount = 1;  ///< Trigger at this many completions of an expression (chosen value; the most it can hold).

  bool triggerOutIo = false, triggerOutNet = false;
  QString triggerOutName;
  bool triggerOutActiveLow = false;
  int triggerOutMinPulse = 0;

  /// What the trigger output adds to the top: a port, a net, or the port and then the net.
  QStringList triggerOutNames() const {
    if (!triggerOutIo && !triggerOutNet) return {};
    if (!triggerOutIo || !triggerOutNet) return {triggerOutName};
    return {triggerOutName, triggerOutName + QLatin1String(kTriggerOutNetSuffix)};
  }

  /// Bits of all samples as a reader holds them: as stored or as shown, whichever takes more.
  qint64 readSampleBits() const;

  int probeWidth() const { return probeBits.size(); }
  /// Bits of one stored sample: probes from bit 0, then unit states (IncludeTrigger), then the timestamp on top.
  int sampleBits() const { return probeBits.size() + (includeTrigger ? units.size() : 0) + timestampBits; }
};

/// Names of the JTAG pins at the instrumented top.
struct JtagPins {
  QString tck = QStringLiteral("ostrel_tck");
  QString tms = QStringLiteral("ostrel_tms");
  QString tdi = QStringLiteral("ostrel_tdi");
  QString tdo = QStringLiteral("ostrel_tdo");
};

/// The way from the cable to the debug hub.
enum class JtagWay {
  Pins,     ///< A TAP of our own on four pins of the top.
  Bscane2,  ///< A user register of the device's TAP, through its primitive BSCANE2.
  GwJtag,   ///< The same through GW_JTAG.
  Wrapper,  ///< A module `ostrel_jtag` of the user's.
};
QStringList jtagWayWords();  ///< By JtagWay; the last one is no word of the user's.

struct PlanJtag {
  JtagWay way = JtagWay::Pins;
  int chain = 1;             ///< Of a primitive: the number of the user register, from 1.
  double periodNs = 100;     ///< TCK's shortest period, for the constraints.
  QByteArray wrapper;        ///< The user's file.
  bool wrapperPins = false;  ///< It has the ports jtag_tck, jtag_tms, jtag_tdi, jtag_tdo.

  bool isPrimitive() const { return way == JtagWay::Bscane2 || way == JtagWay::GwJtag; }
  bool hasPins() const { return way == JtagWay::Pins || (way == JtagWay::Wrapper && wrapperPins); }
  int chains() const { return way == JtagWay::Bscane2 ? 4 : way == JtagWay::GwJtag ? 2 : 1; }
  /// The instruction that selects the hub: bits of the device's instruction register and the code; 0 bits when only
  /// the wrapper's author knows. BSCANE2: as on the 7 series, other families have longer registers.
  int instructionWidth() const;
  quint32 instructionCode() const;
};

struct InsertPlan {
  QString projectName;  ///< Base name of the project file, or "untitled".
  QString topModule;
  QByteArray projectHash;  ///< 16 hex digits, of planHash(); built into the hardware and the capture map.
  JtagPins pins;           ///< Chosen by the insertion, which avoids names of the design; not part of the hash.
  PlanJtag jtag;           ///< Not part of the hash.
  QVector<PlanCore> cores;
  std::optional<PlanWishbone> wishbone;
  std::optional<PlanSerdes> serdes;

  /// Numbers on the hub: the logic-analyzer cores from 0, then the Wishbone master, then the serdes core, as far as
  /// they are there.
  int wishboneNumber() const { return cores.size(); }
  int serdesNumber() const { return wishboneNumber() + (wishbone ? 1 : 0); }
  int hubCores() const { return serdesNumber() + (serdes ? 1 : 0); }
};

/// What a core of the hub is, as its self-description says.
enum class CoreKind { LogicAnalyzer = 1, WishboneMaster = 2, SerdesCore = 3 };

}  // namespace ost

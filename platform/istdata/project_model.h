// The embedded project as data: cores with their options, trace trees, trigger units and expressions. Only structure
// and ownership live here; names, signals and values are checked by the service before they get in.
#pragma once

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>
#include <memory>
#include <vector>

#include "framework/ist_data.h"
#include "platform/trigger/trigger_words.h"

namespace ost {

using mero::ostrel::TraceNode;

// In the order of the numbers that the service's contract has for them.
enum class Polarity { ActiveHigh, ActiveLow };
enum class Implementation { BlockRam, DistributedRam };  ///< "EBR", "DRAM"
enum class CaptureMode { Single, Multiple };
enum class TriggerOutType { Io, Net, Both };
enum class ExpressionRam { Slices, BlockRam };  ///< "Slice", "EBR"

/// The options of one core, with the defaults of a new core.
struct CoreOptions {
  QString sampleClock;  ///< Net; empty = not set.
  bool sampleEnable = false;
  QString sampleEnableSignal;
  Polarity sampleEnablePolarity = Polarity::ActiveHigh;
  bool triggerEnable = false;
  QString triggerEnableSignal;
  Polarity triggerEnablePolarity = Polarity::ActiveHigh;
  int triggerCount = 1;    ///< NumberofTriggers; windows of one capture in multiple mode.
  int bufferDepth = 1024;  ///< Samples.
  Implementation implementation = Implementation::BlockRam;
  bool timestamp = false;
  int timestampBits = 32;
  CaptureMode captureMode = CaptureMode::Single;  ///< The samples of a window are istCore::samplesPerTrigger.
  bool includeTrigger = false;
  bool distRamDisabled = false;
  Radix defaultRadix = Radix::Bin;
  bool eventCounter = false;
  int eventCounterValue = 2;
  bool triggerOut = false;
  TriggerOutType triggerOutType = TriggerOutType::Io;
  QString triggerOutName;
  Polarity triggerOutPolarity = Polarity::ActiveHigh;
  int triggerOutMinPulse = 0;  ///< Sample clock cycles that the output stays active at least; 0 counts as 1.
};

/// A trigger unit: `signalNames` are single bits or vectors; their concatenation, first name leftmost, is compared.
struct TriggerUnit {
  QString name;
  QStringList signalNames;
  Operator op = Operator::Equal;
  Radix radix = Radix::Bin;
  QString value;  ///< Digits as typed, without a prefix.
};

struct TriggerExpression {
  QString name;
  QString text;       ///< Empty: not written yet.
  QStringList units;  ///< The units that `text` uses, each once.
  ExpressionRam ram = ExpressionRam::Slices;
  int maxSequenceDepth = 1;
  int maxEventCount = 1;
};

}  // namespace ost

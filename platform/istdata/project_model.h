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

/// The options of one core, with the defaults of a new core. Encodings are those of the service's contract.
struct CoreOptions {
  QString sampleClock;  ///< Net; empty = not set.
  bool sampleEnable = false;
  QString sampleEnableSignal;
  int sampleEnablePolarity = 0;
  bool triggerEnable = false;
  QString triggerEnableSignal;
  int triggerEnablePolarity = 0;
  int triggerCount = 1;    ///< NumberofTriggers; windows of one capture in multiple mode.
  int bufferDepth = 1024;  ///< Samples.
  int implementation = 0;  ///< 0 EBR, 1 DRAM.
  bool timestamp = false;
  int timestampBits = 32;
  int captureMode = 0;  ///< 0 single, 1 multiple. The samples of a window are istCore::samplesPerTrigger.
  bool includeTrigger = false;
  bool distRamDisabled = false;
  int defaultRadix = 0;  ///< A Radix.
  bool eventCounter = false;
  int eventCounterValue = 2;
  bool triggerOut = false;
  int triggerOutType = 0;  ///< 0 IO, 1 NET, 2 BOTH.
  QString triggerOutName;
  int triggerOutPolarity = 0;
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
  int ram = 0;        ///< 1 EBR, 0 slices.
  int maxSequenceDepth = 1;
  int maxEventCount = 1;
};

}  // namespace ost

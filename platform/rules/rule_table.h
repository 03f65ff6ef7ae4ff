// The design rules as data: number, severity, what is wrong in general and the way out. The checks only add what they
// found to these rows; the build writes them into docs/design-rules.md.
#pragma once

#include <vector>

#include "platform/rules/design_rules.h"

namespace ost {

/// The numbers are stable: a rule that goes leaves a gap. 01: project, 10: sampling, 20: units, 30: expressions,
/// 40: names, 50: memory, 60: drivers and clocks, 70: the Wishbone master, 80: serdes core.
enum class DesignRule {
  NoCoreEnabled = 1,
  TooManyCores = 4,
  TooManyNets = 5,
  NoSampleClock = 10,
  SampleClockVanished = 11,
  SampleClockWide = 12,
  NothingTraced = 13,
  TracedSignalVanished = 14,
  EnableWithoutSignal = 15,
  EnableSignalVanished = 16,
  EnableSignalWide = 17,
  CaptureSettings = 18,
  TooManySignals = 19,
  UnitWithoutSignals = 20,
  UnitWithoutValue = 21,
  UnitSignalVanished = 22,
  UnitValue = 23,
  NoExpression = 30,
  ExpressionUnreadable = 31,
  ExpressionUnknownUnit = 32,
  ExpressionTooDeep = 33,
  ExpressionCountsTooFar = 34,
  ExpressionTooManyUnits = 35,
  TooManyExpressions = 36,
  TriggerOutName = 40,
  TriggerOutNameInDesign = 41,
  TriggerOutNameTwice = 42,
  BlockRamWaste = 50,
  BufferPartlyUsed = 51,
  MemoryTotal = 52,
  DistributedRamSize = 53,
  DistributedRamForbidden = 54,
  TooManySamples = 55,
  NetUndriven = 60,
  NetConstant = 61,
  ClockCrossing = 62,
  ForeignSampleClock = 63,
  SampleClockNotRunning = 64,
  SampleClockTraced = 65,
  NetPartlyUndriven = 66,
  WishboneNoSlave = 70,
  WishboneSeveralSlaves = 71,
  WishbonePorts = 72,
  WishboneClock = 73,
  SerdesNoBlock = 80,
  SerdesSeveralBlocks = 81,
  SerdesNothingWatched = 82,
  SerdesTooManySignals = 83,
  SerdesWord = 84,
  SerdesNoClock = 85,
  SerdesClockNet = 86,
  SerdesResetNet = 87,
  SerdesClockNotRunning = 88,
  SerdesSignalIdle = 89,
  SerdesPathTaken = 90,
};

struct RuleRow {
  DesignRule rule;
  Finding::Severity severity;
  const char* condition;  ///< One line for the documentation.
  /// Commands of the user. `<core>` and other words in angle brackets are filled with what the finding is about where
  /// it is known, and shown as they are otherwise.
  const char* wayOut;
};

const std::vector<RuleRow>& ruleTable();
const RuleRow& ruleRow(DesignRule rule);

/// Total of the buffers above which MemoryTotal warns, in bits.
constexpr qint64 kMemoryBudgetBits = qint64(4) << 20;
/// Size of a buffer above which DistributedRamSize warns, in bits.
constexpr qint64 kDistributedRamBits = qint64(64) << 10;

}  // namespace ost

// The core's JTAG protocol and configuration as docs/debug-core.md has them, for the stand-alone simulation. Written
// from the document and kept apart from the reader's client, so that each proves the other.
#pragma once

#include <string>
#include <vector>

#include "platform/insert/insert_plan.h"

namespace ost::sim {

/// '0'/'1' characters in the order in which they cross the line.
using Bits = std::string;

enum Command { kStatus, kInfo, kRead, kConfig, kTable, kArm, kStop };
enum Flag { kReady = 1, kArmed = 2, kDone = 4, kConfigured = 8, kFresh = 16, kRefused = 32, kAlways = 128 };

/// What is set at run time. Units and steps override the plan's within what is built in.
struct Settings {
  int pre = 0;
  int windows = 1;
  int eventCount = 1;
  QVector<PlanUnit> units;
  QVector<QVector<PlanStep>> steps;  ///< Of each expression; empty = disabled.
};

Bits number(quint64 value, int width);
quint64 value(const Bits& bits, int offset, int width);

/// Without leading zeros: start bit, command, fix, payload.
Bits frame(Command op, int core, int tag, int address, const Bits& payload = Bits());
Bits chain(const PlanCore& core, const Settings& settings);
bool tableInChain(const PlanExpression& expression);
/// All rows of a table that is not in the chain.
Bits tableRows(const PlanExpression& expression, const QVector<PlanStep>& steps);

int wordBits(const PlanCore& core);
int blockWords(const PlanCore& core);
int statusBits(const PlanCore& core);

/// A reply block of `payloadBits` at `offset`; false when its check value is wrong or it is cut off.
struct Block {
  int op = 0, core = 0, tag = 0, address = 0, flags = 0;
  Bits payload;
};
bool parseBlock(const Bits& bits, int offset, int payloadBits, Block& block);

struct Status {
  int tag, running, searching, triggered, triggerEnabled, sampled, window = 0, oldest = 0, events = 0;
  std::vector<int> steps;
};
Status parseStatus(const PlanCore& core, const Bits& payload);

}  // namespace ost::sim

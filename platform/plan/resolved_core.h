// The names of one core as the design has them: looked up once for each check of a project, then judged by the design
// rules and taken over by the planner.
#pragma once

#include <functional>
#include <vector>

#include "platform/design/design.h"
#include "platform/istdata/project.h"
#include "platform/netlist/net_bit.h"
#include "platform/trigger/trigger_expression.h"

namespace ost {

/// A net that an option names.
struct ResolvedName {
  QString name;          ///< As the project has it; empty: not set.
  QVector<NetBit> bits;  ///< Leftmost first; empty: the design has no such net.
};

/// A signal of the trace tree.
struct ResolvedSignal {
  const TraceNode* node = nullptr;
  int width = 0;     ///< Bits that its name stands for: 1, or 0 when the design has no such net, or more when it grew.
  NetBit bit;        ///< With a width of 1.
  int netWidth = 0;  ///< Of the net that the bit belongs to.
  EnumNames netNames;      ///< Of the values of that net.
  bool wholeName = false;  ///< A dot in that net's name is no generate block's.
};

struct ResolvedUnit {
  const TriggerUnit* unit = nullptr;
  QVector<NetBit> bits;    ///< All that its names stand for, leftmost of the first name first.
  QStringList vanished;    ///< Names that the design has no net for.
  EnumNames names;         ///< Of the values that the bits have together.
  QByteArray value, mask;  ///< As parseUnitValue() gives them; empty with a fault, or while the unit lacks something.
  QString fault;           ///< Why the value does not fit the bits.
};

struct ResolvedExpression {
  const TriggerExpression* expression = nullptr;
  ParsedExpression parsed;
  QString fault;  ///< Why the text cannot be read.
};

/// Points into the project, which must not change meanwhile.
struct ResolvedCore {
  const Core* core = nullptr;
  ResolvedName sampleClock;
  ResolvedName sampleEnable, triggerEnable;  ///< Only when switched on.
  /// Those that are a register of another clock than the sample clock, or an input of the top; found by the rules.
  bool sampleEnableForeign = false, triggerEnableForeign = false;
  std::vector<ResolvedSignal> traced;  ///< In tree order; left empty when there are more than kMaxPlanBits.
  std::vector<ResolvedUnit> units;
  std::vector<ResolvedExpression> expressions;
};

/// `beat` is called for every name; once it has returned false the rest is left out.
ResolvedCore resolveCore(const Core& core, const Design& design, const std::function<bool()>& beat = {});

}  // namespace ost

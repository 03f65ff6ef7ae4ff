// Looks at the block that the serdes core watches: levels, counts, and what its clocks do meanwhile.
#pragma once

#include "platform/plan/insert_plan.h"
#include "platform/reader/hub_link.h"

namespace ost {

/// A count of the core; it stops at its end.
struct SerdesCount {
  int count = 0;
  bool isFull = false;  ///< At its end: there were at least `count`.
};

struct SerdesLevel {
  bool level = false;
  bool changed = false;  ///< Since the last look before this one, by whoever.
  SerdesCount rises;     ///< Since the counts were started anew, or the reset ended.
};

/// What was counted within the same time, with the levels at its end.
struct SerdesLook {
  bool inReset = false;
  qint64 sampleClocks = 0;      ///< That the counts of clocks are for.
  SerdesCount tck;              ///< Cycles / kSerdesDivider, as are the clocks.
  QVector<SerdesCount> clocks;  ///< As in the plan.
  QVector<SerdesLevel> levels;

  /// Cycles for each cycle of the sample clock.
  double rate(const SerdesCount& clock) const { return double(clock.count) * kSerdesDivider / double(sampleClocks); }
  /// What a rate may be off by, either way.
  double rateError() const { return double(kSerdesDivider) / double(sampleClocks); }
};

class SerdesReader {
 public:
  /// Both must outlive the reader. The plan has a serdes core.
  SerdesReader(HubLink& hub, const InsertPlan& plan) : hub_(hub), plan_(plan) {}

  /// Two looks, kMeasuredCycles of TCK apart or more: what changed until the second one, and the clocks in between.
  /// `restart`: the counts of levels start anew with the second look. False with the reason in `error`; what had
  /// changed until then is no longer known, the counts are.
  bool read(bool restart, SerdesLook& look, QString& error);

  static constexpr int kMeasuredCycles = 8192;  ///< Of TCK.

 private:
  bool lookOnce(bool restart, SerdesLook& look, QString& error);
  bool waitUntilFresh(const HubCommand& command, HubReply& reply, QString& error);

  HubLink& hub_;
  const InsertPlan& plan_;
};

}  // namespace ost

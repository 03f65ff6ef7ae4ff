// The figures of a core that follow from its plan.
#include "platform/plan/core_layout.h"

#include <algorithm>

namespace ost {
namespace {

constexpr int kBlockBits = 4096;         // Sample bits of a read-out block: 2 % for echo and CRC.
constexpr int kMaxChainTableUnits = 4;   // Above, a memory is smaller than flip-flops with a selector.
constexpr int kMaxOneStageBits = 16;     // Wider units compare in groups first: four levels of LUT6 in each stage.
constexpr int kFixedStatusBits = 8 + 5;  // Tag and flags.

}  // namespace

int unitConfigBits(const PlanUnit& unit) {
  switch (unit.unitClass) {
    case UnitClass::Match:
      return 2 + 2 * unit.width;
    case UnitClass::Order:
      return 3 + unit.width;
    case UnitClass::Serial:
      return 2 * unit.width;
  }
  return 0;
}

CoreLayout::CoreLayout(const PlanCore& core) {
  const int windows = std::max(core.windows, 1);
  windowBits = bitsFor(windows);
  positionBits = std::max(bitsFor(core.windowSamples), 1);
  addressBits = windowBits + positionBits;
  words = qint64(windows) << positionBits;
  wordBits = core.sampleBits() + (windows > 1 ? 1 : 0);
  while ((qint64(wordBits) << blockBits) < kBlockBits && (qint64(1) << blockBits) < words) ++blockBits;
  eventBits = core.eventCounter ? bitsFor(core.eventCount) : 0;

  chainBits = positionBits + windowBits + eventBits;
  for (const PlanUnit& unit : core.units) {
    unitOffsets.append(chainBits);
    chainBits += unitConfigBits(unit);
    if (unit.unitClass != UnitClass::Serial && unit.width > kMaxOneStageBits) unitStages = 2;
  }
  for (const PlanExpression& expression : core.expressions) addExpression(expression, core.distRamDisabled);
  statusBits = kFixedStatusBits + windowBits + (windows > 1 ? 0 : positionBits) + stepStateBits + eventBits;
}

/// Appends to the chain.
void CoreLayout::addExpression(const PlanExpression& expression, bool distRamDisabled) {
  ExpressionLayout layout;
  layout.units = std::max(int(expression.units.size()), 1);
  layout.steps = std::max(expression.maxSequenceDepth, 1);
  layout.stepBits = bitsFor(layout.steps);
  layout.countBits = bitsFor(expression.maxEventCount);
  if (expression.blockRam)
    layout.store = TableStore::Block;
  else if (layout.units > kMaxChainTableUnits)
    layout.store = distRamDisabled ? TableStore::Block : TableStore::Distributed;
  layout.configOffset = chainBits;
  layout.configBits = 1 + layout.stepBits + layout.steps * layout.countBits;
  chainBits += layout.configBits;
  layout.tableBits = layout.steps << layout.units;
  if (layout.store == TableStore::Chain) {
    layout.tableOffset = chainBits;
    chainBits += layout.tableBits;
  } else {
    rowBits = std::max(rowBits, layout.steps);
    tableAddressBits = std::max(tableAddressBits, layout.units);
  }
  stepStateBits += layout.stepBits;
  expressions.append(layout);
}

int hubIndexBits(const InsertPlan& plan) {
  int bits = 8;  // The self-description has 256 bits.
  for (const PlanCore& core : plan.cores) {
    const CoreLayout layout(core);
    bits = std::max({bits, bitsFor(layout.wordBits), bitsFor(layout.statusBits), bitsFor(layout.rowBits)});
  }
  if (plan.serdes) bits = std::max(bits, bitsFor(plan.serdes->statusBits()));
  return bits;
}

int hubAddressBits(const InsertPlan& plan) {
  int bits = plan.wishbone ? kWishboneIndexBits : 1;
  for (const PlanCore& core : plan.cores) {
    const CoreLayout layout(core);
    bits = std::max({bits, layout.addressBits, layout.tableAddressBits});
  }
  return bits;
}

}  // namespace ost

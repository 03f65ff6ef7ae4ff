// Sums of the field widths.
#include "platform/reader/read_layout.h"

namespace ost {

int bitsHolding(int n) {
  int bits = 0;
  while (bits < 31 && (1 << bits) < n) ++bits;
  return bits;
}

ReadLayout::ReadLayout(const PlanCore& core) {
  constexpr int kBlockBits = 4096;
  words = core.windows * core.windowSamples;
  addressBits = bitsHolding(words);
  wordBits = core.sampleBits() + (core.windows > 1 ? 1 : 0);
  blockWords = 1;
  while (qint64(blockWords) * wordBits < kBlockBits && blockWords < words) blockWords *= 2;
  windowBits = bitsHolding(core.windows);
  positionBits = bitsHolding(core.windowSamples);
  eventBits = core.eventCounter ? bitsHolding(core.eventCount) : 0;

  chainBits = positionBits + windowBits + eventBits;
  for (const PlanUnit& unit : core.units) {
    if (unit.unitClass == UnitClass::Match) chainBits += 2 + 2 * unit.width;
    if (unit.unitClass == UnitClass::Order) chainBits += 3 + unit.width;
    if (unit.unitClass == UnitClass::Serial) chainBits += 2 * unit.width;
  }
  statusBits = 8 + 5 + windowBits + (core.windows == 1 ? positionBits : 0) + eventBits;
  for (const PlanExpression& expression : core.expressions) {
    const int steps = expression.maxSequenceDepth;
    chainBits += 1 + bitsHolding(steps) + steps * bitsHolding(expression.maxEventCount);
    if (tableIsInChain(expression)) chainBits += tableRows(expression) * steps;
    statusBits += bitsHolding(steps);
  }
}

}  // namespace ost

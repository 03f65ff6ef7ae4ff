// Size of the debug core as `synth_xilinx -flatten` counts it, from its plan. The weights of LUTs are a least-squares
// fit to 27 synthesised plans (worst difference 9 %); `bench/core_cost ... estimate` tests them on others. Flip-flops
// and block RAMs follow from the structure.
#include <QSet>
#include <algorithm>
#include <cmath>

#include "platform/plan/block_ram.h"
#include "platform/plan/core_layout.h"
#include "platform/rtl/debug_module.h"

namespace ost {
namespace {

constexpr double kHubLuts = 99, kCoreLuts = 55;
constexpr double kPositionBit = 2.2;  // Ring position and window counter.
constexpr double kWordBit = 0.37;     // Read-out selector.
constexpr double kMatchBit = 1.17, kOrderBit = 1.5, kSerialBit = 1.9, kUnit = 0.5;
constexpr double kStep = 0.9, kStepCountBit = 0.7;
constexpr double kChainTableBit = 0.78;
constexpr double kTableMemory = 10.4;      // Row register and write decoding, once.
constexpr double kDistributedTable = 1.1;  // Each step and 64 rows.
constexpr double kDistributedWord = 2.0;   // Each bit and 64 words.
constexpr double kTimestampBit = 0.2, kWindowBit = 1.0, kEventOrPulseBit = 1.7;

constexpr double kWishboneLuts = 100;  // Without the adder of the address.
constexpr int kWishboneFlipFlops = 110;

constexpr int kHubFlipFlops = 108;  // Without the bit index.
constexpr int kCoreFlipFlops = 42;  // Run, tag, flags, synchronisers.

int blocksOf64(qint64 words) {
  return int((words + 63) / 64);
}

void addUnits(const PlanCore& core, double& luts, int& flipFlops) {
  for (const PlanUnit& unit : core.units) {
    luts += kUnit;
    switch (unit.unitClass) {
      case UnitClass::Match:
        luts += kMatchBit * unit.width;
        flipFlops += unit.width + 2;
        break;
      case UnitClass::Order:
        luts += kOrderBit * unit.width;
        flipFlops += 1;
        break;
      case UnitClass::Serial:
        luts += kSerialBit * unit.width;
        flipFlops += unit.width;
        break;
    }
  }
}

void addExpression(const ExpressionLayout& layout, double& luts, int& flipFlops, ResourceEstimate& estimate,
                   int& halves) {
  const qint64 rows = qint64(1) << layout.units;
  if (layout.steps > 1) luts += kStep * layout.steps;
  luts += kStepCountBit * layout.steps * layout.countBits;
  flipFlops += 2 * layout.stepBits + layout.countBits;  // The state and its snapshot.
  if (layout.store == TableStore::Chain) luts += kChainTableBit * layout.tableBits;
  if (layout.store == TableStore::Distributed) luts += kDistributedTable * layout.steps * blocksOf64(rows);
  if (layout.store == TableStore::Block)
    halves += int(blockRamsFor(rows, layout.steps));
  else
    flipFlops += layout.steps;
  if (layout.store != TableStore::Chain) estimate.memoryBits += rows * layout.steps;
}

}  // namespace

ResourceEstimate estimateCore(const PlanCore& core) {
  const CoreLayout layout(core);
  ResourceEstimate estimate;
  const bool pulse = (core.triggerOutIo || core.triggerOutNet) && core.triggerOutMinPulse > 1;
  const int pulseBits = pulse ? bitsFor(core.triggerOutMinPulse) : 0;
  double luts = kCoreLuts + kPositionBit * layout.positionBits + kWordBit * layout.wordBits +
                kTimestampBit * core.timestampBits + kWindowBit * layout.windowBits +
                kEventOrPulseBit * (layout.eventBits + pulseBits);
  int flipFlops = kCoreFlipFlops + layout.chainBits + 3 * core.probeWidth() + core.timestampBits + pulseBits +
                  2 * layout.eventBits + 2 * layout.positionBits;
  flipFlops += layout.windowBits > 0 ? 2 * layout.windowBits + 1 : layout.positionBits;
  if (core.includeTrigger) flipFlops += core.units.size();
  // A bit that is both traced and compared shares its input register.
  QSet<QString> traced;
  for (const NetBit& bit : core.probeBits) traced.insert(bit.name);
  for (const NetBit& bit : core.triggerBits) flipFlops += !traced.contains(bit.name);

  int halves = 0;
  addUnits(core, luts, flipFlops);
  for (const ExpressionLayout& expression : layout.expressions)
    addExpression(expression, luts, flipFlops, estimate, halves);
  if (layout.rowBits > 0) {
    luts += kTableMemory;
    flipFlops += layout.rowBits - 1;
  }
  estimate.memoryBits += layout.words * layout.wordBits;
  if (core.distributedRam && !core.distRamDisabled) {
    luts += kDistributedWord * layout.wordBits * blocksOf64(layout.words);
    flipFlops += layout.wordBits;
  } else {
    halves += int(blockRamsFor(layout.words, layout.wordBits));
  }
  estimate.luts = int(std::lround(luts));
  estimate.flipFlops = flipFlops;
  estimate.blockRams = (halves + 1) / 2;
  return estimate;
}

ResourceEstimate estimateWishbone(const PlanWishbone& wishbone) {
  ResourceEstimate estimate;
  estimate.luts = int(kWishboneLuts + wishbone.addressBits);
  estimate.flipFlops = kWishboneFlipFlops + wishbone.addressBits - 2;
  estimate.blockRams = 2 * int(blockRamsFor(kWishboneWords, kWishboneWordBits)) / 2;
  estimate.memoryBits = 2 * kWishboneWords * kWishboneWordBits;
  return estimate;
}

ResourceEstimate estimateHub(const InsertPlan& plan) {
  ResourceEstimate estimate;
  estimate.luts = int(kHubLuts);
  estimate.flipFlops = kHubFlipFlops + hubIndexBits(plan);
  return estimate;
}

}  // namespace ost

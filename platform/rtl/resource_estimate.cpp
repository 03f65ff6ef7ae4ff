// Size of the debug core as `synth_xilinx -flatten` counts it, from its plan. The weights of LUTs are a least-squares
// fit to 16 random plans (worst difference 13 %; three others came within 10 %), weighed against earlier weights where
// the plans say little. Flip-flops and block RAMs follow from the structure.
#include <QSet>
#include <algorithm>
#include <cmath>

#include "platform/plan/block_ram.h"
#include "platform/plan/core_layout.h"
#include "platform/rtl/debug_module.h"

namespace ost {
namespace {

constexpr double kHubLuts = 99, kCoreLuts = 79;
constexpr double kPositionBit = 1.8;
constexpr double kWordBit = 0.33;  // Read-out selector.
constexpr double kMatchBit = 1.7, kOrderBit = 0.85, kSerialBit = 1.4, kUnit = 0.5;
constexpr double kStep = 0.95, kStepCountBit = 0.37, kCountBit = 2.3;
constexpr double kChainTableBit = 0.5;
constexpr double kTableMemory = 10.3;      // Row register and write decoding, once.
constexpr double kDistributedTable = 1.1;  // Each step and 64 rows.
constexpr double kDistributedWord = 1.5;   // Each bit and 64 words.
constexpr double kTimestampBit = 0.5, kWindowBit = 1.0, kEventBit = 1.5, kPulseBit = 2.5;

constexpr double kWishboneLuts = 100;  // Without the adder of the address.
constexpr int kWishboneFlipFlops = 110;

constexpr double kSerdesLuts = 40, kSerdesEdgeBit = 1.7, kSerdesClock = 6;
constexpr int kSerdesFlipFlops = 45;

constexpr int kHubFlipFlops = 108;  // Without the bit index.
constexpr int kCoreFlipFlops = 49;  // Run, tag, flags, synchronisers.
constexpr int kGroupBits = 16;      // That a stage of a wide unit compares at once.
constexpr int kTimestampPart = 8;

int blocksOf64(qint64 words) {
  return int((words + 63) / 64);
}

/// Of the words that one LUT holds as dual-port memory.
int blocksOf32(int words) {
  return (words + 31) / 32;
}

void addUnits(const PlanCore& core, bool twoStages, double& luts, int& flipFlops) {
  for (const PlanUnit& unit : core.units) {
    luts += kUnit;
    const int groups = (unit.width + kGroupBits - 1) / kGroupBits;
    switch (unit.unitClass) {
      case UnitClass::Match:
        luts += kMatchBit * unit.width;
        flipFlops += unit.width + 2 + (twoStages ? groups + 1 : 0);
        break;
      case UnitClass::Order:
        luts += kOrderBit * unit.width;
        flipFlops += 1 + (twoStages ? 2 * groups : 0);
        break;
      case UnitClass::Serial:
        luts += kSerialBit * unit.width;
        flipFlops += unit.width + twoStages;
        break;
    }
  }
}

void addExpression(const ExpressionLayout& layout, double& luts, int& flipFlops, ResourceEstimate& estimate,
                   int& halves) {
  const qint64 rows = qint64(1) << layout.units;
  if (layout.steps > 1) luts += kStep * layout.steps;
  luts += (kStepCountBit * layout.steps + kCountBit) * layout.countBits;
  flipFlops += 1 + 2 * layout.stepBits;  // What it fires, the state and its snapshot.
  if (layout.countBits > 0) flipFlops += layout.countBits + 1;
  if (layout.countBits > 0 && layout.stepBits > 0)
    flipFlops += layout.countBits + layout.stepBits;  // Of the next step.
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
                kTimestampBit * core.timestampBits + kWindowBit * layout.windowBits + kEventBit * layout.eventBits +
                kPulseBit * pulseBits;
  int flipFlops = kCoreFlipFlops + layout.chainBits + (3 + layout.unitStages) * core.probeWidth() + core.timestampBits +
                  core.timestampBits / kTimestampPart + pulseBits + 3 * layout.eventBits + 3 * layout.positionBits +
                  2 * (core.sampleEnableForeign + core.triggerEnableForeign);
  flipFlops += layout.windowBits > 0 ? 2 * layout.windowBits + 1 : layout.positionBits;
  if (core.includeTrigger) flipFlops += 2 * core.units.size();
  // A bit that is both traced and compared shares its input register.
  QSet<QString> traced;
  for (const NetBit& bit : core.probeBits) traced.insert(bit.name);
  for (const NetBit& bit : core.triggerBits) flipFlops += !traced.contains(bit.name);

  int halves = 0;
  addUnits(core, layout.unitStages > 1, luts, flipFlops);
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

ResourceEstimate estimateSerdes(const PlanSerdes& serdes) {
  const int signals = 1 + serdes.clocks.size() + serdes.levels.size();  // With TCK.
  const int memories = 2 * ((kSerdesCellBits + 5) / 6) * 4 * blocksOf32(serdes.rows());
  ResourceEstimate estimate;
  estimate.luts = int(std::lround(kSerdesLuts + memories + signals * kSerdesEdgeBit * serdes.edgeBits() +
                                  kSerdesClock * (1 + serdes.clocks.size())));
  estimate.flipFlops = kSerdesFlipFlops + signals * (3 + serdes.edgeBits()) + 6 * (1 + serdes.clocks.size());
  estimate.memoryBits = 2 * (kSerdesCellBits << serdes.rowBits());
  return estimate;
}

ResourceEstimate estimateHub(const InsertPlan& plan) {
  ResourceEstimate estimate;
  estimate.luts = int(kHubLuts);
  estimate.flipFlops = kHubFlipFlops + hubIndexBits(plan);
  return estimate;
}

}  // namespace ost

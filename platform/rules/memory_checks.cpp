// Checks of the memory that a core's buffer takes.
#include "platform/plan/block_ram.h"
#include "platform/rules/core_check.h"

namespace ost {

namespace {

constexpr int kDeepestBuffer = 65536;

}  // namespace

int CoreCheck::sampleBits() const {
  // The tree holds each bit as one signal; further uses of it are references.
  int bits = tracedBits_;
  if (core_.options.includeTrigger) bits += int(core_.dataset.units().size());
  if (core_.options.timestamp) bits += core_.options.timestampBits;
  // With several windows each sample bears a bit that tells where its window begins.
  if (bits > 0 && core_.options.captureMode == CaptureMode::Multiple && core_.options.triggerCount > 1) ++bits;
  return bits;
}

int CoreCheck::bufferedSamples() const {
  const qint64 used = qint64(core_.options.triggerCount) * core_.samplesPerTrigger;
  return core_.options.captureMode == CaptureMode::Single ? core_.options.bufferDepth
                                                          : int(qMin(used, qint64(core_.options.bufferDepth)));
}

void CoreCheck::checkBlockRam(int samples, int width, const QString& asked) const {
  const qint64 blocks = blockRamsFor(samples, width);
  const auto wasteful = [width](qint64 depth) {
    return blockRamsFor(depth, width) * kBlockRamBits > 2 * depth * width;
  };
  if (blocks * kBlockRamBits <= 2 * bufferBits()) return;
  int depth = qMin(2 * core_.options.bufferDepth, kDeepestBuffer);
  while (depth < kDeepestBuffer && wasteful(depth)) depth *= 2;
  FindingList::Fills fills;  // Distributed RAM is no way out where it is forbidden.
  if (core_.options.distRamDisabled)
    fills = {
        {QStringLiteral("Implementation=DRAM, or a greater BufferDepth"), QStringLiteral("BufferDepth=%1").arg(depth)}};
  report(DesignRule::BlockRamWaste, QString(),
         asked + QStringLiteral(" and takes %1 block RAM%2 of 36 Kbit, %3 bits")
                     .arg(double(blocks) / 2)
                     .arg(QLatin1String(blocks == 2 ? "" : "s"))
                     .arg(blocks * kBlockRamBits),
         fills);
}

void CoreCheck::checkMemory() const {
  const CoreOptions& options = core_.options;
  const int width = sampleBits();
  if (width == 0) return;
  const int samples = bufferedSamples();
  const qint64 bits = bufferBits();
  const QString asked = QStringLiteral("the buffer of %1 x %2 bits asks for %3 bits").arg(samples).arg(width).arg(bits);

  const bool distributed = options.implementation == Implementation::DistributedRam && !options.distRamDisabled;
  if (options.implementation == Implementation::DistributedRam && options.distRamDisabled)
    report(DesignRule::DistributedRamForbidden, QString(),
           QStringLiteral("Implementation is DRAM and DistRAMDisable is on: the buffer becomes block RAM"));
  if (distributed && bits > kDistributedRamBits)
    report(DesignRule::DistributedRamSize, QString(), asked + QLatin1String(" of distributed RAM"));
  if (!distributed) checkBlockRam(samples, width, asked);
  if (samples < options.bufferDepth)
    report(DesignRule::BufferPartlyUsed, QString(),
           QStringLiteral("%1 of %2 use %3 of %4 samples of the buffer depth")
               .arg(counted(options.triggerCount, "trigger"), counted(core_.samplesPerTrigger, "sample"))
               .arg(samples)
               .arg(options.bufferDepth),
           {{QStringLiteral("<triggers>"), QString::number(options.bufferDepth / qMax(1, core_.samplesPerTrigger))},
            {QStringLiteral("<depth>"), QString::number(samples)}});
}

}  // namespace ost

// A test bench that replays the capture of one instance on the source of its module: it drives the captured inputs and
// compares the outputs with the captured ones.
#pragma once

#include "platform/reader/capture_options.h"

namespace ost {

/// The core that `options.replay` can be replayed from; -1 with a text for the user in `error` when there is none, or
/// when its samples leave clocks out without telling so.
int coreOfReplay(const QVector<PlanCore>& cores, const CaptureOptions& options, QString& error);

/// The bench, module `ostrel_replay`, in Verilog but for $fatal of SystemVerilog. It replays those samples around
/// the trigger between which no clock was left out. Registers that were captured begin with their first sample, all
/// others unknown; an output bit is compared when the replay's value is known. It ends with status 1 after a
/// difference.
QByteArray replayBench(const Capture& capture, const ProbedInstance& instance, int window);

/// The instance of that path; null when the core has none that can be replayed.
const ProbedInstance* probedInstance(const PlanCore& core, const QString& path);

}  // namespace ost

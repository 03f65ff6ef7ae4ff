// A capture as a session file of sigrok (.sr): logic channels for PulseView, sigrok-cli and their protocol decoders.
#pragma once

#include <QByteArray>

#include "platform/reader/capture.h"
#include "platform/reader/capture_times.h"

namespace ost {

/// A channel for each captured bit that is shown, named as in the trace; then `trigger`, `window` (with several; high
/// in every other one) and the unit states. sigrok has one distance between all samples: the samples of all windows
/// follow each other, and what timestamps tell is not in the file. Without a known period the rate is 1 MHz.
QByteArray captureToSigrok(const Capture& capture, const ClockPeriod& period);

}  // namespace ost

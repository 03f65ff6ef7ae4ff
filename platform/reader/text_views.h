// A capture as text: a small waveform for a terminal, and comma-separated values.
#pragma once

#include <QByteArray>

#include "platform/reader/capture.h"

namespace ost {

/// The samples around the trigger of each window in so many columns (40 or more): single bits as "_" and "~", vectors
/// in the core's display radix, or the names of their values, where these change. The column of the trigger is marked
/// with "T"; the scale above counts samples from there.
QByteArray captureToWave(const Capture& capture, int columns = 100);

/// A line for each sample under a line of names: window (from 0), sample counted from the trigger, timestamp (when the
/// core has one), the probes in the core's display radix or by the names of their values, then unit states (when
/// stored).
QByteArray captureToCsv(const Capture& capture);

}  // namespace ost

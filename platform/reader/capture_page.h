// A capture as one page for a browser, which needs nothing else.
#pragma once

#include <QByteArray>

#include "platform/reader/capture.h"
#include "platform/reader/capture_times.h"

namespace ost {

/// The page with the data of the capture in it: probes, then unit states; times are sampleTimes().
QByteArray captureToPage(const Capture& capture, const QString& topModule, const ClockPeriod& period);

}  // namespace ost

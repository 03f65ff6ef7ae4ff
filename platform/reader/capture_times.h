// The time axis of a capture, which all files for viewers share.
#pragma once

#include <QByteArray>
#include <QVector>

#include "platform/reader/capture.h"

namespace ost {

/// The time of each shown sample, window after window, from 0 at the first: the distances of the (unwrapped)
/// timestamps, or without them one unit from sample to sample and two from window to window.
QVector<qint64> sampleTimes(const Capture& capture);

/// The period of a sample clock, in femtoseconds; 0: not known.
struct ClockPeriod {
  qint64 femtoseconds = 0;

  bool isKnown() const { return femtoseconds > 0; }
  QByteArray text() const;  ///< "12.5 ns".
  double hertz() const { return 1e15 / femtoseconds; }
};

/// "10ns", "6.25ns": a number with up to 6 digits on each side of its point and a unit from fs to ms, of whole
/// femtoseconds.
bool parsePeriod(const QString& text, ClockPeriod& period);

}  // namespace ost

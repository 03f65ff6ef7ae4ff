// The trigger language on samples that have been captured.
#pragma once

#include "platform/reader/capture.h"

namespace ost {

/// Where to look: a window, from 0, and its samples `from` to `to`, counted from the trigger.
struct SearchRange {
  int window = 0;
  int from = 0, to = 0;
};

/// The samples, counted from the trigger, at which `expression` of the `units` is complete. Each completion begins the
/// search anew at the following sample, as in the hardware. What was before the window's first captured sample is not
/// known, so an edge or a serial pattern that reaches beyond it does not hold. A unit is computed from the captured
/// bits; where some of its bits were not captured its state in the run is taken, if that was stored. False with `error`
/// otherwise, and for an expression that cannot be read.
bool findSamples(const Capture& capture, const QVector<PlanUnit>& units, const QString& expression,
                 const SearchRange& range, QVector<int>& samples, QString& error);

}  // namespace ost

// What of a capture is shown: some of its signals, some of its samples, in another radix.
#pragma once

#include <QStringList>

#include "platform/reader/capture.h"
#include "platform/reader/run_settings.h"

namespace ost {

struct ViewChoice {
  bool hasRadix = false;
  Radix radix = Radix::Bin;
  bool hasRange = false;
  int from = 0, to = 0;     ///< Samples, counted from the trigger, both shown.
  QStringList signalGlobs;  ///< Empty: all. "*" stands for any characters, "?" for one.
};

/// False with `error` when nothing of the run's capture would be left.
bool checkView(const RunSettings& settings, const ViewChoice& view, QString& error);

/// The part of `capture` that is to be shown.
Capture viewOf(Capture capture, const ViewChoice& view);

}  // namespace ost

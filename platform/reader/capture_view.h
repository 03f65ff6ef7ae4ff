// What of a capture is shown: some of its signals, some of its samples, in another radix.
#pragma once

#include <QStringList>

#include "platform/reader/capture.h"

namespace ost {

struct ViewChoice {
  bool hasRadix = false;
  Radix radix = Radix::Bin;
  bool hasRange = false;
  int from = 0, to = 0;     ///< Samples, counted from the trigger, both shown.
  QStringList signalGlobs;  ///< Empty: all. "*" stands for any characters, "?" for one.
};

/// False with `error` when nothing would be left of a capture by `core` with `position` samples before the trigger.
bool checkView(const PlanCore& core, int position, const ViewChoice& view, QString& error);

/// Whether `name` fits one of the globs; without globs, any name does.
bool fitsGlobs(const QString& name, const QStringList& globs);

/// The part of `capture` that is to be shown.
Capture viewOf(Capture capture, const ViewChoice& view);

}  // namespace ost

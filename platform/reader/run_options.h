// What the command line asks of the cores of a capture map.
#pragma once

#include "platform/reader/capture_options.h"
#include "platform/reader/run_settings.h"

namespace ost {

/// The cores that are meant: all, the one named, or the only one. Empty with the choices in `error`.
QVector<int> chooseCores(const InsertPlan& plan, const CaptureOptions& options, QString& error);

/// False with `error` when "-period" names a core that is not among `names`.
bool checkPeriods(const QStringList& names, const CaptureOptions& options, QString& error);

/// Changes the run-time settings of a core as the options say. With several cores an assignment names its own:
/// CORE/UNIT=VALUE.
bool applyRunOptions(const CaptureOptions& options, RunSettings& settings, QString& error);

}  // namespace ost

// What a look at the serdes block showed, for people and for programs.
#pragma once

#include <QByteArray>

#include "platform/reader/capture_times.h"
#include "platform/reader/serdes_reader.h"

namespace ost {

/// A table of the levels and one of the clocks. `period`: of the sample clock; when it is known the clocks have
/// frequencies.
QByteArray serdesToText(const PlanSerdes& plan, const SerdesLook& look, const ClockPeriod& period);

/// One object; docs/serdes-core.md has its members.
QByteArray serdesToJson(const InsertPlan& plan, const SerdesLook& look, const ClockPeriod& period);

}  // namespace ost

// A capture as a value change dump (IEEE 1364), for wave viewers, and what GTKWave is to show of it.
#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>

#include "platform/reader/capture.h"
#include "platform/reader/capture_times.h"

namespace ost {

struct VcdStyle {
  ClockPeriod period;                      ///< Of all sample clocks but those
  QMap<QString, ClockPeriod> corePeriods;  ///< of these cores, by name.
  bool singleBits = false;                 ///< For programs that read no vectors.

  /// Known: time is real, otherwise a sample or a sample clock counts as 1 ns.
  ClockPeriod periodOf(const Capture& capture) const { return corePeriods.value(capture.core.name, period); }
};

/// Times are sampleTimes(); between two windows everything is x, when there is a unit of time for it. Next to the
/// probes, in the scopes of their instances and with their names and ranges as declared, a scope `ostrel` holds:
/// `trigger`, high at the sample of each trigger; `window`, the number of the window from 0 (with several windows); and
/// the unit states as `unit_<name>` (with IncludeTrigger). A net of an enumerated type has a text beside it,
/// `<net>_name`, of the kind `string` that viewers take beyond the standard. Equal names get a number.
///
/// Several cores' captures are on one axis, which begins where each was armed: a core with timestamps has its samples
/// at their timestamps, in periods of its own sample clock; one without has the first sample at 0. In the scope
/// `ostrel` each core has a scope of its own. Where a core has no sample yet, or no more, its values are x.
QByteArray capturesToVcd(const QVector<Capture>& captures, const QString& topModule, const VcdStyle& style = {});

/// The time of a sample in that file, counted in sampleTimes() from the first of its capture, in units of the file's
/// timescale.
class VcdClock {
 public:
  VcdClock(const QVector<Capture>& captures, const VcdStyle& style);
  QByteArray timescale() const { return timescale_; }  ///< "1 ns".
  qint64 startOf(const Capture& capture) const;        ///< In sample clocks of the core, as are the times of samples.
  /// The axis ends at the largest number, which a capture with known period reaches after weeks.
  qint64 scaled(const Capture& capture, qint64 time) const;

 private:
  bool several_;
  QMap<QString, qint64> factors_;  ///< By the cores' names.
  QByteArray timescale_ = "1 ns";
};

}  // namespace ost

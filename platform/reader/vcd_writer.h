// A capture as a value change dump (IEEE 1364), for wave viewers.
#pragma once

#include <QByteArray>

#include "platform/reader/capture.h"

namespace ost {

/// Time is the index of the sample, or with timestamps their (unwrapped) value; the samples of two windows are
/// separated by a time unit at which everything is x. Next to the probes, in the scopes of their instances, a scope
/// `ostrel` holds: `trigger`, high at the sample of each trigger; `window`, the number of the window from 0 (with
/// several windows); and the unit states as `unit_<name>` (with IncludeTrigger). A net of an enumerated type
/// has a text beside it, `<net>_name`, of the kind `string` that viewers take beyond the standard. Names that a viewer
/// would refuse are changed: illegal characters become "_" and equal names get a number.
QByteArray captureToVcd(const Capture& capture, const QString& topModule);

/// Several cores' captures on one axis, which begins where each was armed: a core with timestamps has its samples at
/// their timestamps, in periods of its own sample clock; one without has the first sample at 0. In the scope `ostrel`
/// each core has a scope of its own. Where a core has no sample yet, or no more, its values are x.
QByteArray capturesToVcd(const QVector<Capture>& captures, const QString& topModule);

}  // namespace ost

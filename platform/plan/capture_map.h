// The capture map: the plan as JSON beside the instrumented design, from which a reader configures the core and
// decodes its samples.
#pragma once

#include <QByteArray>

#include "platform/plan/insert_plan.h"

namespace ost {

/// Version 2 names values of enumerated types, version 3 the way to the chip when that is not four pins, version 4
/// tells how the nets of probes are declared, version 5 which instances can be replayed, and has a Wishbone master and
/// a serdes core. New maps are of version 5.
constexpr int kCaptureMapVersion = 5;
/// The last version whose hash covers everything, what is only shown, too.
constexpr int kLastWhollyHashedVersion = 4;

/// What a reader takes: some sixty bytes for each of the 2^20 bits that the cores of one map may have together.
constexpr qint64 kMaxCaptureMapBytes = 64 << 20;

/// The plan as text; the same plan gives the same text.
QByteArray captureMapJson(const InsertPlan& plan);
/// The plan's hash: 16 hex digits over all that the hardware depends on. What a reader needs only to show or to replay
/// a capture is not in it, so that it can change while the hardware stays: the trace list, names and texts of units and
/// expressions, radices, names of values, the instances; nor is the way to the chip. `version` is that of the map.
QByteArray planHash(const InsertPlan& plan, int version = kCaptureMapVersion);
/// Reads and checks a capture map; nothing in it is trusted. False with the place and the reason in `error`.
bool readCaptureMap(const QByteArray& json, InsertPlan& plan, QString& error);

}  // namespace ost

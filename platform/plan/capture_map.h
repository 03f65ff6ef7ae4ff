// The capture map: the plan as JSON beside the instrumented design, from which a reader configures the core and
// decodes its samples.
#pragma once

#include <QByteArray>

#include "platform/plan/insert_plan.h"

namespace ost {

/// What a reader takes: some sixty bytes for each of the 2^20 bits that the cores of one map may have together.
constexpr qint64 kMaxCaptureMapBytes = 64 << 20;

/// The plan as text; the same plan gives the same text.
QByteArray captureMapJson(const InsertPlan& plan);
/// The plan's hash: 16 hex digits over everything in it but the hash itself and the way to the chip.
QByteArray planHash(const InsertPlan& plan);
/// Reads and checks a capture map; nothing in it is trusted. False with the place and the reason in `error`.
bool readCaptureMap(const QByteArray& json, InsertPlan& plan, QString& error);

}  // namespace ost

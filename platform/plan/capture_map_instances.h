// The instances that can be replayed, in a capture map.
#pragma once

#include "platform/plan/json_lines.h"
#include "platform/plan/probed_instance.h"
#include "platform/text/json_fields.h"

namespace ost {

void writeInstance(JsonLines& out, const ProbedInstance& instance);

/// Reads one; nothing in it is trusted. `probeBits`: captured bits of its core; `entries`: counts those of all lists,
/// of which a map has kMaxPlanIndexes at most. The first fault goes into `fault`.
ProbedInstance readInstance(const QJsonValue& value, const QString& path, int probeBits, int& entries,
                            JsonFault& fault);

}  // namespace ost

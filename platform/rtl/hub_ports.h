// How a core of any kind is connected to the hub.
#pragma once

#include "platform/plan/insert_plan.h"
#include "platform/rtl/verilog_text.h"

namespace ost {

/// The ports that every core's module has towards ostrel_hub, connected to the wires of core `number`.
QList<verilog::Connection> hubPorts(int number);

/// The kind's half of the self-description: `fields` are (bits, value), the least significant first, 120 bits in all.
QByteArray infoConstant(CoreKind kind, const QList<QPair<int, qint64>>& fields);

}  // namespace ost

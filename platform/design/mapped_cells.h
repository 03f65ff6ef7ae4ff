// Netlists that a synthesis has worked on: cells that Verilog cannot say, and what has no name of its own.
#pragma once

#include "platform/design/yosys_script.h"

namespace ost {

/// True for a cell of Yosys' own, "$alu", that it writes into Verilog as an instance of this name.
bool isRawCell(const QByteArray& type);

/// The `hierarchy` and `proc` of a design, then memories in ports, words and gates that Verilog has operators for, and
/// names of the form "unnamed$1" for registers without one and for instances of `boxes`, the keys of modules without a
/// body. Both sides of a proof know them by these names. In all but a netlist in JSON an inout that a register or logic
/// drives is another net than what drives it.
YosysScript plainCellsScript(const YosysScript& hierarchy, bool isNetlist, const QList<QByteArray>& boxes);

/// True for one of those names: "unnamed$12".
bool isGivenName(const QByteArray& name);

}  // namespace ost

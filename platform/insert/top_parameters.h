// The parameters of the top module in the written Verilog. The netlist has their values built in; declared again, they
// let a test bench that sets them compile, and tell of one that sets another value.
#pragma once

#include "platform/netlist/netlist_text.h"

namespace ost {

/// Declarations and a check for the body of the top; empty for a top without parameters. Names and values are written
/// as Verilog, whatever they hold. Real ones are not in a netlist of Yosys, nor is the order of the declarations.
QByteArray topParametersVerilog(const NetlistText& netlist);

/// The name as Verilog spells it, escaped where it must be.
QByteArray verilogName(const QByteArray& name);

}  // namespace ost

// Registers declared [0:N], as the writer of Verilog needs them.
#pragma once

#include "platform/insert/text_edits.h"

namespace ost {

/// Yosys writes a flip-flop or latch of one bit that is part of a net [0:N] as the bit at the other end of the net.
/// Such nets, and ports of their names, become [N:0] in the edits; the order of their bits stays.
void declareDescending(const NetlistText& netlist, const NetlistModule& module, TextEdits& edits);

}  // namespace ost

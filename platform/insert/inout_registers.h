// Registers that drive an inout without a tri-state buffer. Read back, such a register would be one net with the inout,
// and no Verilog tool takes an inout that is declared as a register.
#pragma once

#include <vector>

#include "platform/netlist/netlist_bits.h"

namespace ost {

struct InOutRegister {
  TextSpan bitsSpan;  ///< Of the bits at the cell's output, in the netlist's text.
  QVector<int> bits;
  QByteArray initial;  ///< '0', '1' or 'x' a bit, least significant first.
};

/// The registers and latches of a module that drive one of its inouts, or an instance's.
std::vector<InOutRegister> registersOnInOuts(const NetlistBits& netlist, int module);

}  // namespace ost

// A bit of the design, by names.
#pragma once

#include <QString>

namespace ost {

/// One bit of a net in one instance of the design.
struct NetBit {
  QString instancePath;  ///< "u_sys/u_rx", empty for the top module.
  QString net;           ///< As Yosys names it in the module.
  int bit = 0;           ///< Position in the netlist's bit list, 0 = least significant.
  QString name;          ///< Full name as shown: "u_sys/u_rx/state[3]".

  bool operator==(const NetBit& other) const {
    return bit == other.bit && net == other.net && instancePath == other.instancePath;
  }
};

}  // namespace ost

// What the plan says of the serdes core: the block that it watches.
#pragma once

#include "platform/netlist/net_bit.h"

namespace ost {

struct PlanSerdes {
  NetBit clock;  ///< On which the block is watched.
};

}  // namespace ost

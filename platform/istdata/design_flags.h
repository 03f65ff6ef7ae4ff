// The flags of the loaded design, as RTLHierachy answers them. The service keeps them in step with the design.
#pragma once

#include "framework/ist_data.h"

namespace ost {

struct DesignFlags {
  bool dcu = false;
  bool j2w = false;
  bool jtag2wb = false;
  bool jtag2wbCore = false;
};

/// There is one design in a process, and so one set of flags.
ISTDATA_API void setDesignFlags(const DesignFlags& flags);

}  // namespace ost

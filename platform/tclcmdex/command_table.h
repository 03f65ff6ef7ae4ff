// Looking things up in the command table, which another thread's interpreter may be registering again meanwhile.
#pragma once

#include "framework/tcl_cmdex.h"

namespace tcl_cmdex {

/// The entry of that name, which stays where it is; null when there is none.
const TclCmd* findEntry(const std::map<std::string, TclCmd>& entries, const char* name);

}  // namespace tcl_cmdex

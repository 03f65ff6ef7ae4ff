// What a host of the embedded libraries can set or ask: where console text goes, which interpreter is running a
// command, and the serving of its events during a long task.
#pragma once

#include "framework/tcl_cmdex.h"

namespace tcl_cmdex {

/// Receives every console text, as it is; `interp` may be null. The default sink writes to the interpreter's stdout
/// channel and flushes it.
typedef void (*ConsoleSink)(void* user, Tcl_Interp* interp, const char* text, int kind);
/// Replaces the sink; null restores the default.
TCLCMDEX_API void setConsoleSink(ConsoleSink sink, void* user);

/// The interpreter whose command is being dispatched, innermost; null outside.
TCLCMDEX_API Tcl_Interp* currentInterpreter();

/// Serves the events that are pending now, without waiting. False when the interpreter that runs the innermost
/// command has been deleted meanwhile.
TCLCMDEX_API bool servePendingEvents();

}  // namespace tcl_cmdex

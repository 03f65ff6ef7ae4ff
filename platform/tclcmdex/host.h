// What a host of the embedded libraries can set or ask: where console text goes, the guard in which commands run, which
// interpreter is running one, and the serving of its events during a long task.
#pragma once

#include "framework/tcl_cmdex.h"

namespace tcl_cmdex {

/// Receives every console text, as it is; `interp` may be null. The default sink writes to the interpreter's stdout
/// channel and flushes it.
typedef void (*ConsoleSink)(void* user, Tcl_Interp* interp, const char* text, int kind);
/// Replaces the sink; null restores the default.
TCLCMDEX_API void setConsoleSink(ConsoleSink sink, void* user);

/// True while console texts go to the default sink.
TCLCMDEX_API bool sinkIsStdout();

/// How many lines of console text have begun with "ERROR:" in this process, whatever the sink.
TCLCMDEX_API int errorsShown();

/// Runs `body(data)` as the command `name` and returns its Tcl status; every command of ours runs so, and any other
/// that works on the project or the design should. Refused, with an error in the interpreter, on a second thread: there
/// is one project and one design, and the first thread that called a command keeps both until it ends. Refused, too,
/// more than 64 commands inside one another. What `body` throws becomes the error, the end of memory with a text of its
/// own.
TCLCMDEX_API int runGuarded(Tcl_Interp* interp, const char* name, int (*body)(void*), void* data);
/// The same for a function object without arguments.
template <class Body>
int runGuarded(Tcl_Interp* interp, const char* name, Body body) {
  return runGuarded(
      interp, name, [](void* data) { return (*static_cast<Body*>(data))(); }, &body);
}

/// How many commands are running, each inside the one before: an event that a command serves, or a trace or channel
/// transformation that its output meets, may call the next. 0 outside; above 1 nothing may be changed that the outer
/// ones hold.
TCLCMDEX_API int dispatchDepth();

/// The interpreter whose command is being dispatched, innermost; null outside.
TCLCMDEX_API Tcl_Interp* currentInterpreter();

/// True when the name fits the pattern as in "string match": with regard to case; "*" and "?" stand for "/", too. Only
/// within runGuarded().
TCLCMDEX_API bool fitsPattern(const char* name, const char* pattern);

/// Serves the events that are pending now, without waiting. False when the task should end: the interpreter that runs
/// the innermost command has been deleted meanwhile, a handler of signals has returned an error, or a signal has come
/// that ends the process (see ProgressLine).
TCLCMDEX_API bool servePendingEvents();

}  // namespace tcl_cmdex

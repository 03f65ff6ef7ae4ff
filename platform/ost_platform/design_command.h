// The command `ost_design` and what its sources share.
#pragma once

#include <QString>
#include <string>

#include "platform/design/design.h"
#include "platform/tclcmdex/tcl_values.h"

namespace ost {

/// The procedure of `ost_design`.
int designCommand(ClientData, Tcl_Interp* interp, int objc, Tcl_Obj* const objv[]);

/// Help on a sub-command, or on all of them when `subCommand` is empty; empty when there is no such sub-command.
std::string designHelp(const std::string& subCommand);

/// `ost_design level ?PATH?`
int runLevel(Tcl_Interp* interp, int objc, Tcl_Obj* const objv[]);
/// `ost_design ports INSTANCE ?-inputs? ?-outputs? ?-clocks? ?-registers?`
int runPorts(Tcl_Interp* interp, int objc, Tcl_Obj* const objv[]);

/// The error of a command that needs a design.
int failWithoutDesign(Tcl_Interp* interp);
/// Refuses what would change the design under a command that works with it, or serve events inside it: this one was
/// called by an event that the other serves, or by what its output meets.
bool isFree(Tcl_Interp* interp);

/// Reads the words of `ost_design read` from objv[2] on. On failure the interpreter holds the error.
bool parseReadWords(Tcl_Interp* interp, int objc, Tcl_Obj* const objv[], DesignSource& source);

/// The same for the words of `ost_design jtag`; a wrapper's name is made absolute.
bool parseJtagWords(Tcl_Interp* interp, int objc, Tcl_Obj* const objv[], DesignSource& source);

/// The error for wrong words of a sub-command: `message`, then its usage; errorCode `OST USAGE ost_design <sub>`.
int failUsage(Tcl_Interp* interp, const QString& message, const char* subCommand);

}  // namespace ost

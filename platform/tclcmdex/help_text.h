// Help from the command table, and the error for a sub-command that does not exist.
#pragma once

#include <string>

#include "framework/tcl_cmdex.h"

namespace tcl_cmdex {

/// True for `help`, `-help` and `--help`.
bool isHelpWord(const char* word);

/// The command's line followed by the help of all its sub-commands, sorted by name.
std::string commandHelp(const TclCmd& command);

/// `unknown sub-command "ad": must be add, ..., or select (did you mean "add"?)`, errorCode
/// `TCL LOOKUP SUBCOMMAND ad`. Returns TCL_ERROR.
int refuseSubCommand(Tcl_Interp* interp, const TclCmd& command, const char* word);

}  // namespace tcl_cmdex

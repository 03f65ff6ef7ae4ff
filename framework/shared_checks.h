// The helpers that every handler shares and that the host tool may call as well: result text, project checks, help.
#pragma once

#include <tcl.h>

#include "framework/export.h"

/// Appends `text` to the interpreter's result.
OST_EXPORT_CPP void printMessage(Tcl_Interp* interp, const char* text);

/// True when a project is open; otherwise the result says that none is.
OST_EXPORT_CPP bool checkLoadedProj(Tcl_Interp* interp);

/// True when the current project is busy; the result then asks to wait.
OST_EXPORT_CPP bool checkProjBusyStatus(Tcl_Interp* interp);

/// Writes the help page `name` to standard output and a remark on it to standard error; appends the reason to the
/// result when there is no such page.
OST_EXPORT_CPP void printCmdHelp(Tcl_Interp* interp, char* name);

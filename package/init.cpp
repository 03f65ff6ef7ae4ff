// Loading of the package: the global command table and the entry that the interpreter's loader calls.
#include <tcl.h>

#include "framework/export.h"
#include "framework/ist_com_data.h"
#include "framework/tcl_cmdex.h"
#include "package/command_table.h"

namespace {

/// Shared by all interpreters of the process; lives as long as the library is loaded.
tcl_cmdex::TclCmdMap commandMap("Ostrel Inserter");

}  // namespace

/// Creates the commands in `interp` and provides the package. TCL_ERROR, with nothing registered, when the interpreter
/// has no stubs table of Tcl 8.4 or later.
OST_EXPORT int Ost_tclwrapper_Init(Tcl_Interp* interp) {
  if (!Tcl_InitStubs(interp, "8.4", 0)) return TCL_ERROR;
  mero::ostrel::IstComData* service = mero::ostrel::IstComData::getInstance();
  for (std::size_t i = 0; i < kCommandRowCount; ++i) {
    const CommandRow& row = kCommandRows[i];
    commandMap.registerCmd(row.command, row.subCommand, row.help, row.handler, service);
    if (!row.subCommand) Tcl_CreateCommand(interp, row.command, tcl_cmdex::TclCmdExInvoker, &commandMap, nullptr);
  }
  Tcl_PkgProvide(interp, "ost_tclwrapper", OST_PACKAGE_VERSION);
  return TCL_OK;
}

// Loading of the package ost_platform.
#include <tcl.h>

#include "platform/ost_platform/design_command.h"
#include "platform/tclcmdex/host.h"

namespace {

/// `ost_platform::errorsShown`: how many lines with an ERROR the commands have shown, for the status of a batch.
int errorsShown(ClientData, Tcl_Interp* interp, int, Tcl_Obj* const[]) {
  Tcl_SetObjResult(interp, Tcl_NewIntObj(tcl_cmdex::errorsShown()));
  return TCL_OK;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) int Ost_platform_Init(Tcl_Interp* interp) {
  if (!Tcl_InitStubs(interp, "8.4", 0)) return TCL_ERROR;
  Tcl_CreateObjCommand(interp, "ost_design", ost::designCommand, nullptr, nullptr);
  if (Tcl_Eval(interp, "namespace eval ::ost_platform {}") != TCL_OK) return TCL_ERROR;
  Tcl_CreateObjCommand(interp, "::ost_platform::errorsShown", errorsShown, nullptr, nullptr);
  return Tcl_PkgProvide(interp, "ost_platform", OST_PACKAGE_VERSION);
}

// Loading of the package ost_platform.
#include <tcl.h>

#include "platform/ost_platform/design_command.h"

extern "C" __attribute__((visibility("default"))) int Ost_platform_Init(Tcl_Interp* interp) {
  if (!Tcl_InitStubs(interp, "8.4", 0)) return TCL_ERROR;
  Tcl_CreateObjCommand(interp, "ost_design", ost::designCommand, nullptr, nullptr);
  return Tcl_PkgProvide(interp, "ost_platform", OST_PACKAGE_VERSION);
}

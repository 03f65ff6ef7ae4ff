// The package that starting is compared with: it provides itself, has no command, and is linked with Qt Core.
#include <tcl.h>

#include <QString>

extern "C" __attribute__((visibility("default"))) int Qt_stub_Init(Tcl_Interp* interp) {
  if (!Tcl_InitStubs(interp, "8.4", 0)) return TCL_ERROR;
  return Tcl_PkgProvide(interp, "qt_stub", QString::number(1.0, 'f', 1).toLatin1().constData());
}

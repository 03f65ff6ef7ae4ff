// Doubles of the libraries' reporting functions, which record instead of print.
#include <tcl.h>

#include "framework/hlp_help.h"
#include "framework/tcl_cmdex.h"
#include "tests/unit/commands/service_double.h"

namespace tcl_cmdex {

void TclMsgOutput(Tcl_Interp*, const char* text, int kind) {
  service->record(kind == 0 ? "show" : "show!kind", {text});
}

void TclCmd::reportTclArgsErrorResult(Tcl_Interp* interp) const {
  service->record("usage", {});
  Tcl_SetResult(interp, const_cast<char*>("usage"), TCL_STATIC);
}

void TclCmd::reportTclArgsErrorResult(Tcl_Interp* interp, const char* word, const char* message) const {
  service->record("wrong", {word, message});
  Tcl_SetResult(interp, const_cast<char*>("wrong"), TCL_STATIC);
}

}  // namespace tcl_cmdex

bool hlp_help(char* name, std::string& error, std::string& text, std::string& extra) {
  service->record("hlp_help", {name});
  error = service->answers["help error"];
  text = service->answers["help text"];
  extra = service->answers["help extra"];
  return service->refused.count("hlp_help") == 0;
}

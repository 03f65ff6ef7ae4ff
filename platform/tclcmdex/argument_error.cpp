// The argument-error texts: what is wrong, then the registered usage; errorCode for scripts that branch on it.
#include "framework/tcl_cmdex.h"
#include "platform/tclcmdex/call_record.h"
#include "platform/tclcmdex/tcl_access.h"

namespace tcl_cmdex {

// errorCode: OST USAGE <command> <sub-command>.
void TclCmd::reportTclArgsErrorResult(Tcl_Interp* interp) const {
  std::string reason = takeReason();
  if (!tclIsReady(interp)) return;
  if (reason.empty()) reason = "wrong # args for \"" + name + '"';
  setResult(interp, reason + '\n' + help);
  setErrorCodeWords(interp, "OST", "USAGE", name);
}

// errorCode: OST VALUE <word>.
void TclCmd::reportTclArgsErrorResult(Tcl_Interp* interp, const char* word, const char* message) const {
  takeReason();
  if (!tclIsReady(interp)) return;
  const std::string subject = word != nullptr ? word : "";
  setResult(interp, subject + ": " + (message != nullptr ? message : "wrong value") + '\n' + help);
  Tcl_SetErrorCode(interp, "OST", "VALUE", subject.c_str(), static_cast<char*>(nullptr));
}

}  // namespace tcl_cmdex

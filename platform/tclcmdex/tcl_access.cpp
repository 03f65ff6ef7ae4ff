// This library's stubs pointer and its small Tcl helpers. Only Tcl functions that exist since 8.4.
#include "platform/tclcmdex/tcl_access.h"

#include <atomic>
#include <sstream>

namespace tcl_cmdex {

bool tclIsReady(Tcl_Interp* interp) {
  static std::atomic<bool> ready(false);
  if (!ready && interp != nullptr) ready = Tcl_InitStubs(interp, "8.4", 0) != nullptr;
  return ready;
}

void setResult(Tcl_Interp* interp, const std::string& text) {
  Tcl_SetObjResult(interp, Tcl_NewStringObj(text.data(), static_cast<int>(text.size())));
}

void setErrorCodeWords(Tcl_Interp* interp, const char* first, const char* second, const std::string& rest) {
  Tcl_Obj* code = Tcl_NewListObj(0, nullptr);
  Tcl_ListObjAppendElement(interp, code, Tcl_NewStringObj(first, -1));
  Tcl_ListObjAppendElement(interp, code, Tcl_NewStringObj(second, -1));
  std::istringstream words(rest);
  for (std::string word; words >> word;)
    Tcl_ListObjAppendElement(interp, code, Tcl_NewStringObj(word.data(), static_cast<int>(word.size())));
  Tcl_SetObjErrorCode(interp, code);
}

}  // namespace tcl_cmdex

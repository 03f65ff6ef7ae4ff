// The exported helpers that every handler shares. They ask the data service itself, not the handler's client data.
#include "framework/shared_checks.h"

#include <string>

#include "framework/hlp_help.h"
#include "framework/ist_com_data.h"

using mero::ostrel::IstComData;

namespace {

void writeToChannel(Tcl_Channel channel, const std::string& text) {
  if (channel && !text.empty()) Tcl_WriteChars(channel, text.data(), static_cast<int>(text.size()));
}

}  // namespace

void printMessage(Tcl_Interp* interp, const char* text) {
  Tcl_AppendResult(interp, text, nullptr);
}

bool checkLoadedProj(Tcl_Interp* interp) {
  if (IstComData::getInstance()->currentProject()) return true;
  printMessage(interp, "ERROR: No ostrel project is opened.");
  return false;
}

bool checkProjBusyStatus(Tcl_Interp* interp) {
  if (!IstComData::getInstance()->isProjBusy()) return false;
  printMessage(interp, "ERROR: Current ostrel project is busy, please wait.");
  return true;
}

void printCmdHelp(Tcl_Interp* interp, char* name) {
  const Tcl_Channel errorChannel = Tcl_GetStdChannel(TCL_STDERR);
  const Tcl_Channel outputChannel = Tcl_GetStdChannel(TCL_STDOUT);
  std::string error, text, extra;
  if (hlp_help(name, error, text, extra)) {
    writeToChannel(errorChannel, extra);
  } else if (!error.empty()) {
    printMessage(interp, error.c_str());
  }
  writeToChannel(outputChannel, text);
}

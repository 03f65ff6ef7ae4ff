// Console output: one replaceable sink for every text that is not a command's result.
#include <cstdio>
#include <cstring>

#include "platform/tclcmdex/host.h"
#include "platform/tclcmdex/tcl_access.h"

namespace tcl_cmdex {

namespace {

// The channel is looked up for each text, as `puts` does, so that closing, reopening and `chan push` work.
void writeToStdout(void*, Tcl_Interp* interp, const char* text, int) {
  if (interp == nullptr) interp = currentInterpreter();
  if (!tclIsReady(interp)) {
    std::fputs(text, stdout);
    std::fflush(stdout);
    return;
  }
  if (interp == nullptr || Tcl_InterpDeleted(interp)) {
    Tcl_Channel channel = Tcl_GetStdChannel(TCL_STDOUT);
    if (channel != nullptr && Tcl_WriteChars(channel, text, -1) >= 0) Tcl_Flush(channel);
    return;
  }
  // A failed look-up and a channel transformation written in Tcl both touch the result.
  Tcl_SavedResult saved;
  Tcl_SaveResult(interp, &saved);
  int mode = 0;
  Tcl_Channel channel = Tcl_GetChannel(interp, "stdout", &mode);
  if (channel != nullptr && (mode & TCL_WRITABLE) != 0 && Tcl_WriteChars(channel, text, -1) >= 0) Tcl_Flush(channel);
  Tcl_RestoreResult(interp, &saved);
}

ConsoleSink activeSink = writeToStdout;
void* activeUser = nullptr;
int errorLines = 0;

int countErrors(const char* text) {
  int count = 0;
  for (const char* at = text; (at = std::strstr(at, "ERROR:")) != nullptr; ++at)
    if (at == text || at[-1] == '\n') ++count;
  return count;
}

}  // namespace

void setConsoleSink(ConsoleSink sink, void* user) {
  activeSink = sink != nullptr ? sink : writeToStdout;
  activeUser = sink != nullptr ? user : nullptr;
}

bool sinkIsStdout() {
  return activeSink == writeToStdout;
}

int errorsShown() {
  return errorLines;
}

void TclMsgOutput(Tcl_Interp* interp, const char* text, int kind) {
  if (text == nullptr || text[0] == '\0') return;
  errorLines += countErrors(text);
  activeSink(activeUser, interp, text, kind);
}

}  // namespace tcl_cmdex

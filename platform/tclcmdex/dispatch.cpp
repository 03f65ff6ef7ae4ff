// The dispatcher: from a command's words to the handler of its sub-command, and what a host may ask about the
// command that is running.
#include <cstring>
#include <stdexcept>

#include "framework/tcl_cmdex.h"
#include "platform/system/interrupt.h"
#include "platform/tclcmdex/call_record.h"
#include "platform/tclcmdex/command_table.h"
#include "platform/tclcmdex/help_text.h"
#include "platform/tclcmdex/host.h"
#include "platform/tclcmdex/tcl_access.h"

namespace tcl_cmdex {

namespace {

/// The entry of the command as typed; `::ost_core` is ost_core. Null when it was renamed.
const TclCmd* findCommand(const TclCmdMap& table, const char* word) {
  for (const char* qualifier; (qualifier = std::strstr(word, "::")) != nullptr;) word = qualifier + 2;
  return findEntry(table.commands, word);
}

int refuseRenamedCommand(Tcl_Interp* interp, const TclCmdMap& table, const char* word) {
  std::string text = "\"" + std::string(word) + "\" is not a command of the table \"" + table.name +
                     "\": call a command by the name it was registered with (use \"interp alias\" for another name)";
  setResult(interp, text);
  Tcl_SetErrorCode(interp, "TCL", "LOOKUP", "COMMAND", word, static_cast<char*>(nullptr));
  return TCL_ERROR;
}

/// `<command> help ?sub-command?`
int showHelp(Tcl_Interp* interp, const TclCmd& command, int argc, const char** argv) {
  if (argc > 3) {
    setResult(interp,
              "wrong # args: should be \"" + std::string(argv[0]) + " " + std::string(argv[1]) + " ?sub-command?\"");
    setErrorCodeWords(interp, "TCL", "WRONGARGS", "");
    return TCL_ERROR;
  }
  if (argc < 3) {
    setResult(interp, commandHelp(command));
    return TCL_OK;
  }
  const TclCmd* sub = findEntry(command.subCommands, argv[2]);
  if (sub == nullptr) return refuseSubCommand(interp, command, argv[2]);
  setResult(interp, sub->help);
  return TCL_OK;
}

int callHandler(Tcl_Interp* interp, const TclCmd& entry, int argc, const char** argv) {
  if (entry.handler == nullptr) throw std::logic_error("it has no handler");
  CommandContext context = {&entry, entry.clientData};
  return entry.handler(&context, interp, argc, argv);
}

int dispatch(Tcl_Interp* interp, const TclCmdMap& table, int argc, const char** argv) {
  const TclCmd* command = findCommand(table, argv[0]);
  if (command == nullptr) return refuseRenamedCommand(interp, table, argv[0]);
  if (argc < 2) return showHelp(interp, *command, argc, argv);

  const TclCmd* sub = findEntry(command->subCommands, argv[1]);
  if (sub == nullptr)
    return isHelpWord(argv[1]) ? showHelp(interp, *command, argc, argv) : refuseSubCommand(interp, *command, argv[1]);
  CallRecord::innermost()->name = sub->name.c_str();
  return callHandler(interp, *sub, argc - 1, argv + 1);
}

}  // namespace

int TclCmdExInvoker(ClientData tableData, Tcl_Interp* interp, int argc, const char** argv) {
  if (!tclIsReady(interp)) return TCL_ERROR;
  return runGuarded(interp, argv[0],
                    [&] { return dispatch(interp, *static_cast<const TclCmdMap*>(tableData), argc, argv); });
}

bool fitsPattern(const char* name, const char* pattern) {
  return Tcl_StringMatch(name, pattern) != 0;
}

bool servePendingEvents() {
  Tcl_Interp* interp = currentInterpreter();
  if (ost::InterruptScope::signal()) return false;
  if (!tclIsReady(interp)) return true;
  // A signal that a script or a host handles; Tcl_DoOneEvent() would lose what the handler says.
  if (interp && Tcl_AsyncReady() && Tcl_AsyncInvoke(interp, TCL_OK) != TCL_OK) return false;
  // Bounded, so that an event that always arms the next one cannot hold up the task that serves it.
  const int mostEvents = 64;
  if (interp == nullptr) {
    for (int i = 0; i < mostEvents && Tcl_DoOneEvent(TCL_ALL_EVENTS | TCL_DONT_WAIT) != 0; ++i) continue;
    return true;
  }
  if (Tcl_InterpDeleted(interp)) return false;
  // Scripts of events leave their results in the interpreter; the running command keeps its own.
  Tcl_SavedResult saved;
  Tcl_SaveResult(interp, &saved);
  for (int i = 0; i < mostEvents && !Tcl_InterpDeleted(interp); ++i)
    if (Tcl_DoOneEvent(TCL_ALL_EVENTS | TCL_DONT_WAIT) == 0) break;
  Tcl_RestoreResult(interp, &saved);
  return Tcl_InterpDeleted(interp) == 0;
}

}  // namespace tcl_cmdex

// Contract of the command-extension library (libtclcmdex): the command table, the dispatcher, the parser of option
// words and the console output. The package only calls it; platform/tclcmdex holds our own edition.
#pragma once

#include <tcl.h>

#include <map>
#include <string>
#include <vector>

#define TCLCMDEX_API __attribute__((visibility("default")))

namespace tcl_cmdex {

/// A sub-command's procedure. `clientData` is the CommandContext of the call, `argv[0]` the sub-command word.
/// Returns the Tcl status, TCL_OK or TCL_ERROR.
typedef int (*TclCmdHandler)(void* clientData, Tcl_Interp* interp, int argc, const char** argv);

/// One registered command or sub-command. Held by value inside the maps and destroyed with them.
class TCLCMDEX_API TclCmd {
 public:
  TclCmd();
  TclCmd(const TclCmd& other);
  TclCmd& operator=(const TclCmd& other);
  ~TclCmd();

  /// Sets the result to what is wrong with the words of the running call, followed by this entry's usage.
  void reportTclArgsErrorResult(Tcl_Interp* interp) const;
  /// The same for a wrong value: `word` is the option (or the word itself), `message` says what is wrong with it.
  void reportTclArgsErrorResult(Tcl_Interp* interp, const char* word, const char* message) const;

  std::string help;
  std::map<std::string, TclCmd> subCommands;  ///< Empty for a sub-command.
  TclCmdHandler handler;                      ///< Null for a command-level entry.
  void* clientData;
  std::string name;  ///< As typed: "ost_core" or "ost_core add".
};

/// What the dispatcher hands to a handler as its client data.
struct CommandContext {
  const TclCmd* command;  ///< The entry of the sub-command being run.
  void* clientData;       ///< What was registered with it.
};

/// The command table: command name to entry, ordered by name.
class TCLCMDEX_API TclCmdMap {
 public:
  explicit TclCmdMap(const char* name);
  ~TclCmdMap();

  /// With `subcmd` null creates or updates the command-level entry of `cmd`; otherwise adds or replaces the
  /// sub-command below it (the command-level entry is created when it is missing). All texts are copied.
  void registerCmd(const char* cmd, const char* subcmd, const char* help, TclCmdHandler handler, void* clientData);

  std::map<std::string, TclCmd> commands;
  std::string name;

 private:
  TclCmdMap(const TclCmdMap&);
  TclCmdMap& operator=(const TclCmdMap&);
};

/// The words of one call, sorted into options, flags and positional values. Declare, check, then read.
/// Names are given without their hyphen.
class TCLCMDEX_API TclCmdParametersChecker {
 public:
  TclCmdParametersChecker();
  ~TclCmdParametersChecker();

  /// Declares `-name value`; a null default means absent. Given twice, the last value holds.
  void setOptionValue(const char* name, const char* defaultValue);
  /// Declares `-name value` that may be repeated, each time adding a value.
  void addMultipleValueOptionValue(const char* name, const char* defaultValue);
  /// Declares the flag `-name` with its initial value.
  void setFlag(const char* name, bool value);

  /// True when `word` does not begin with a hyphen.
  static bool isValueParameter(const char* word);

  /// The option's value; empty when it was not given.
  std::string getOptionValue(const char* name) const;
  /// All values of a multi-value option in the order given; empty when it was not given.
  const std::vector<std::string>& getMultiValuesOptionValue(const char* name) const;
  bool isFlagSet(const char* name) const;
  /// The positional value at `index` (from 0); empty past the end.
  std::string getValueAt(unsigned index) const;

  std::map<std::string, std::string> options;
  std::map<std::string, std::vector<std::string> > multiOptions;
  std::map<std::string, bool> flags;
  std::vector<std::string> values;  ///< Positional values in command-line order.

 private:
  TclCmdParametersChecker(const TclCmdParametersChecker&);
  TclCmdParametersChecker& operator=(const TclCmdParametersChecker&);
};

/// Parses the words after `argv[0]` into `checker`. False on a word it cannot place.
TCLCMDEX_API bool CheckCmdParameters(int argc, const char** argv, TclCmdParametersChecker& checker);

/// The Tcl command procedure of every command; its client data is the TclCmdMap.
TCLCMDEX_API int TclCmdExInvoker(ClientData table, Tcl_Interp* interp, int argc, const char** argv);

/// Writes `text` to the console of the interpreter's host, as it is; `kind` is 0 for plain text. Leaves the
/// interpreter's result alone.
TCLCMDEX_API void TclMsgOutput(Tcl_Interp* interp, const char* text, int kind);

}  // namespace tcl_cmdex

// One call of a handler: its context and words, and the few ways in which every handler checks, resolves and reports.
// Each function is one step of a handler; the handler itself keeps their order.
#pragma once

#include <tcl.h>

#include <initializer_list>
#include <optional>
#include <string>

#include "framework/ist_com_data.h"
#include "framework/tcl_cmdex.h"

namespace ost_command {

/// A false or null return of any check or resolution has already been reported, but for contextIsValid(), which is
/// silent. Everything that a call holds ends with it, on every path out of the handler.
class CommandCall {
 public:
  /// `clientData` is the dispatcher's CommandContext; `argv[0]` the sub-command word.
  CommandCall(void* clientData, Tcl_Interp* interp, int argc, const char** argv);

  /// False, without a message, when the context, its table entry or its service is missing.
  bool contextIsValid() const;
  bool projectIsOpen() const;
  bool projectIsIdle() const;

  /// For sub-commands without options: exactly `count` words follow, none of which looks like an option.
  bool hasExactlyWords(int count) const;
  /// The word at `index`; 0 is the sub-command word.
  const char* word(int index) const { return argv_[index]; }
  /// The number of words, counting the sub-command word.
  int wordCount() const { return argc_; }

  CommandCall& declareOption(const char* name);
  CommandCall& declareRepeatedOption(const char* name);
  CommandCall& declareFlag(const char* name);
  /// Sorts the words into what was declared and `fewest` to `most` positional values; a negative `most` is no limit.
  bool parse(int fewest, int most);
  std::string option(const char* name) const { return checker_->getOptionValue(name); }
  const std::vector<std::string>& repeatedOption(const char* name) const;
  bool flag(const char* name) const { return checker_->isFlagSet(name); }
  /// The positional value at `index` from 0; empty past the end.
  std::string value(unsigned index) const { return checker_->getValueAt(index); }
  const std::vector<std::string>& values() const { return checker_->values; }

  /// The core of `-core`, or the active one.
  mero::ostrel::istCore* resolveCore() const;
  mero::ostrel::istTraceData* resolveTrace(mero::ostrel::istCore* core) const;
  /// Core, then trace data.
  mero::ostrel::istTraceData* resolveTrace() const;
  /// Core, then dataset.
  mero::ostrel::istDataset* resolveDataset() const;

  mero::ostrel::IstComData& service() const { return *static_cast<mero::ostrel::IstComData*>(context_->clientData); }
  Tcl_Interp* interp() const { return interp_; }

  /// The sub-command's usage as the result; returns TCL_ERROR.
  int usageError() const;
  /// A wrong value: `word` is the option or the word itself; returns TCL_ERROR.
  int valueError(const std::string& word, const std::string& message) const;
  /// Appends `pieces` to the result; returns TCL_ERROR.
  int fail(std::initializer_list<const char*> pieces) const;
  /// Sets a literal as the result; returns TCL_ERROR.
  int failWith(const char* literal) const;
  /// Prints the catalogue message `code`; returns TCL_ERROR.
  int failNumbered(const char* code, const std::string& arg1 = std::string()) const;
  void setResultLiteral(const char* literal) const;
  /// Sets a copy of `text` as the result.
  void setResult(const std::string& text) const;
  void setResult(const QString& text) const;

  /// Writes `text` to the console as it is, even when it is empty.
  void show(const std::string& text) const;
  /// Writes a service's text to the console unless it is empty, with `suffix` behind it.
  void showServiceText(const QString& text, const char* suffix = "") const;
  void printNumbered(const char* code, const std::string& arg1 = std::string()) const;

 private:
  CommandCall(const CommandCall&);
  CommandCall& operator=(const CommandCall&);

  tcl_cmdex::TclCmdParametersChecker& checker();

  const tcl_cmdex::CommandContext* context_;
  Tcl_Interp* interp_;
  int argc_;
  const char** argv_;
  std::optional<tcl_cmdex::TclCmdParametersChecker> checker_;  ///< Made by the first declaration or parse().
};

}  // namespace ost_command

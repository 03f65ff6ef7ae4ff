// The steps that handlers share: checks, core and dataset resolution, results and messages.
#include "framework/command_call.h"

#include "framework/shared_checks.h"
#include "framework/text.h"

using mero::ostrel::istCore;
using mero::ostrel::istDataset;
using mero::ostrel::istTraceData;
using tcl_cmdex::TclCmdParametersChecker;

namespace ost_command {

CommandCall::CommandCall(void* clientData, Tcl_Interp* interp, int argc, const char** argv)
    : context_(static_cast<const tcl_cmdex::CommandContext*>(clientData)), interp_(interp), argc_(argc), argv_(argv) {}

bool CommandCall::contextIsValid() const {
  return context_ && context_->command && context_->clientData;
}

bool CommandCall::projectIsOpen() const {
  return checkLoadedProj(interp_);
}

bool CommandCall::projectIsIdle() const {
  return !checkProjBusyStatus(interp_);
}

bool CommandCall::hasExactlyWords(int count) const {
  bool fits = argc_ == count + 1;
  for (int i = 1; fits && i <= count; ++i) fits = TclCmdParametersChecker::isValueParameter(argv_[i]);
  if (!fits) usageError();
  return fits;
}

TclCmdParametersChecker& CommandCall::checker() {
  if (!checker_) checker_.emplace();
  return *checker_;
}

CommandCall& CommandCall::declareOption(const char* name) {
  checker().setOptionValue(name, nullptr);
  return *this;
}

CommandCall& CommandCall::declareRepeatedOption(const char* name) {
  checker().addMultipleValueOptionValue(name, nullptr);
  return *this;
}

CommandCall& CommandCall::declareFlag(const char* name) {
  checker().setFlag(name, false);
  return *this;
}

bool CommandCall::parse(int fewest, int most) {
  if (tcl_cmdex::CheckCmdParameters(argc_, argv_, checker())) {
    const int count = static_cast<int>(checker_->values.size());
    if (count >= fewest && (most < 0 || count <= most)) return true;
  }
  usageError();
  return false;
}

const std::vector<std::string>& CommandCall::repeatedOption(const char* name) const {
  return checker_->getMultiValuesOptionValue(name);
}

istCore* CommandCall::resolveCore() const {
  const std::string name = option("core");
  istCore* core = name.empty() ? service().getActiveLogicCore() : service().getCore(toService(name));
  if (core) return core;
  if (name.empty()) {
    failWith("No valid core is selected or specified.");
  } else {
    valueError("-core", name + " is not a valid core name.");
  }
  return nullptr;
}

istTraceData* CommandCall::resolveTrace(istCore* core) const {
  istTraceData* trace = service().getTrace(core);
  if (!trace) failWith("No valid dataset is selected or specified.");
  return trace;
}

istTraceData* CommandCall::resolveTrace() const {
  istCore* core = resolveCore();
  return core ? resolveTrace(core) : nullptr;
}

istDataset* CommandCall::resolveDataset() const {
  istCore* core = resolveCore();
  if (!core) return nullptr;
  istDataset* dataset = service().getDataset(core);
  if (!dataset) failWith("No valid dataset is selected or specified.");
  return dataset;
}

int CommandCall::usageError() const {
  context_->command->reportTclArgsErrorResult(interp_);
  return TCL_ERROR;
}

int CommandCall::valueError(const std::string& word, const std::string& message) const {
  context_->command->reportTclArgsErrorResult(interp_, word.c_str(), message.c_str());
  return TCL_ERROR;
}

int CommandCall::fail(std::initializer_list<const char*> pieces) const {
  for (const char* piece : pieces) printMessage(interp_, piece);
  return TCL_ERROR;
}

int CommandCall::failWith(const char* literal) const {
  setResultLiteral(literal);
  return TCL_ERROR;
}

int CommandCall::failNumbered(const char* code, const std::string& arg1) const {
  printNumbered(code, arg1);
  return TCL_ERROR;
}

void CommandCall::setResultLiteral(const char* literal) const {
  Tcl_SetResult(interp_, const_cast<char*>(literal), TCL_STATIC);
}

void CommandCall::setResult(const std::string& text) const {
  Tcl_SetResult(interp_, const_cast<char*>(text.c_str()), TCL_VOLATILE);
}

void CommandCall::setResult(const QString& text) const {
  setResult(fromService(text));
}

void CommandCall::show(const std::string& text) const {
  tcl_cmdex::TclMsgOutput(interp_, text.c_str(), 0);
}

void CommandCall::showServiceText(const QString& text, const char* suffix) const {
  if (!text.isEmpty()) show(fromService(text) + suffix);
}

void CommandCall::printNumbered(const char* code, const std::string& arg1) const {
  service().PrintMessage(code, arg1, std::string());
}

}  // namespace ost_command

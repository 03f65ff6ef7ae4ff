// The parser of a call's words: options, flags and positional values.
#include <algorithm>

#include "framework/tcl_cmdex.h"
#include "platform/tclcmdex/call_record.h"

namespace tcl_cmdex {

TclCmdParametersChecker::TclCmdParametersChecker() = default;
TclCmdParametersChecker::~TclCmdParametersChecker() = default;

void TclCmdParametersChecker::setOptionValue(const char* name, const char* defaultValue) {
  options[name] = defaultValue != nullptr ? defaultValue : "";
}

void TclCmdParametersChecker::addMultipleValueOptionValue(const char* name, const char* defaultValue) {
  std::vector<std::string>& list = multiOptions[name];
  list.clear();
  if (defaultValue != nullptr) list.push_back(defaultValue);
}

void TclCmdParametersChecker::setFlag(const char* name, bool value) {
  flags[name] = value;
}

bool TclCmdParametersChecker::isValueParameter(const char* word) {
  if (word != nullptr && word[0] != '-') return true;
  // A handler that asks this takes fixed words only, so a hyphen there is an option nobody declared.
  if (word != nullptr) noteReason("unknown option \"" + std::string(word) + '"');
  return false;
}

std::string TclCmdParametersChecker::getOptionValue(const char* name) const {
  const auto found = options.find(name);
  return found != options.end() ? found->second : std::string();
}

const std::vector<std::string>& TclCmdParametersChecker::getMultiValuesOptionValue(const char* name) const {
  static const std::vector<std::string> none;
  const auto found = multiOptions.find(name);
  return found != multiOptions.end() ? found->second : none;
}

bool TclCmdParametersChecker::isFlagSet(const char* name) const {
  const auto found = flags.find(name);
  return found != flags.end() && found->second;
}

std::string TclCmdParametersChecker::getValueAt(unsigned index) const {
  return index < values.size() ? values[index] : std::string();
}

namespace {

bool refuse(const char* what, const char* word) {
  noteReason(what + (" \"" + std::string(word)) + '"');
  return false;
}

}  // namespace

bool CheckCmdParameters(int argc, const char** argv, TclCmdParametersChecker& checker) {
  takeReason();
  std::vector<std::vector<std::string>*> given;  // Multi-value options seen: the first value replaces the default.
  bool optionsEnded = false;
  checker.values.reserve(static_cast<std::size_t>(std::max(0, argc - 1)));
  for (int i = 1; i < argc; ++i) {
    const char* word = argv[i];
    if (optionsEnded || word[0] != '-') {
      checker.values.push_back(word);
      continue;
    }
    const std::string name(word + 1);
    if (name == "-") {
      optionsEnded = true;
      continue;
    }
    const auto flag = checker.flags.find(name);
    if (flag != checker.flags.end()) {
      flag->second = true;
      continue;
    }
    const auto single = checker.options.find(name);
    const auto multi = checker.multiOptions.find(name);
    if (single == checker.options.end() && multi == checker.multiOptions.end()) return refuse("unknown option", word);
    if (i + 1 == argc) return refuse("missing value for", word);
    const char* value = argv[++i];  // Whatever it begins with.
    if (single != checker.options.end()) {
      single->second = value;
      continue;
    }
    std::vector<std::string>& list = multi->second;
    if (std::find(given.begin(), given.end(), &list) == given.end()) {
      list.clear();
      given.push_back(&list);
    }
    list.push_back(value);
  }
  return true;
}

}  // namespace tcl_cmdex

// `ost_trace trc_option` and `ost_trace trig_option`: one handler for both families of a core's options.
#include <cstring>

#include "commands/handlers.h"
#include "commands/trace_options.h"
#include "commands/trigger_options.h"
#include "framework/command_call.h"

using mero::ostrel::IstComData;
using mero::ostrel::istCore;
using namespace ost_command;

namespace {

/// What differs between the two families.
struct OptionFamily {
  const char* word;  ///< First argument of the messages on words.
  void (*generate)(OptionList& options);
  void (*list)(IstComData* data, istCore* core, QString& out);
  int (*set)(IstComData* data, istCore* core, OptionList& options, QString& out);
};

const OptionFamily kTraceFamily = {"trace", generate_trace_option_list, listTraceOptions, setTraceOptions};
const OptionFamily kTriggerFamily = {"trigger", generate_trigger_option_list, listTriggerOptions, setTriggerOptions};

/// Collects Option=value words. A word that is none, or names no option, is reported and left out.
/// The Wishbone command does the same with codes and arguments of its own.
void collectOptions(IstComData& service, const OptionFamily& family, const std::vector<std::string>& words,
                    OptionList& options) {
  std::string name, value;
  for (const std::string& word : words) {
    if (!splitOptionWord(word, name, value)) {
      service.PrintMessage("0156", family.word, std::string());
      continue;
    }
    OptionEntry* entry = options.find(name);
    if (!entry) {
      service.PrintMessage("0157", family.word, name);
      continue;
    }
    if (entry->set) service.PrintMessage("0158", family.word, name);  // the later value wins
    entry->value.swap(value);
    entry->set = true;
  }
}

}  // namespace

/// `ost_trace trc_option|trig_option [-core <core>] [<Option>=<value> ...]`
///
/// Result: without option words the current settings (also while the project is busy), else empty. Rejected options
/// are reported by messages and never fail the command.
OST_HANDLER(ost_set_trace_opt) {
  CommandCall call(clientData, interp, argc, argv);
  if (!call.contextIsValid()) return TCL_ERROR;
  if (!call.projectIsOpen()) return TCL_ERROR;
  if (!call.declareOption("core").parse(0, -1)) return TCL_ERROR;
  istCore* core = call.resolveCore();
  if (!core) return TCL_ERROR;
  if (!call.resolveTrace(core)) return TCL_ERROR;

  const OptionFamily& family = std::strcmp(call.word(0), "trc_option") == 0 ? kTraceFamily : kTriggerFamily;
  QString text;
  if (call.values().empty()) {
    family.list(&call.service(), core, text);
    if (!text.isEmpty()) call.setResult(text);
    return TCL_OK;
  }

  if (!call.projectIsIdle()) return TCL_ERROR;
  OptionList options;
  family.generate(options);
  collectOptions(call.service(), family, call.values(), options);
  family.set(&call.service(), core, options, text);
  call.showServiceText(text);
  return TCL_OK;
}

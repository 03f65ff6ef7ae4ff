// The options of the Wishbone master and their handler, which the package binds to no command.
#include "commands/wishbone_options.h"

#include "commands/handlers.h"
#include "framework/command_call.h"
#include "framework/text.h"

using mero::ostrel::ENDIAN_MODE;
using mero::ostrel::IstComData;
using mero::ostrel::istWishboneMaster;
using mero::ostrel::RTLHierachy;
using namespace ost_command;

namespace {

/// The master can be connected only where the design has the JTAG-to-Wishbone path and no such core of its own.
bool designTakesConnection(IstComData& service) {
  RTLHierachy* design = service.hierarchy();
  if (!design) return false;
  const bool hasPath = design->getJtag2WBFlag();
  const bool hasOwnCore = design->getJtag2WBCore();
  return hasPath && !hasOwnCore;
}

void setPerformConnect(IstComData& service, const std::string& typed) {
  const QString value = toServiceTrimmed(typed).toLower();
  if (value == QLatin1String("true")) {
    if (!designTakesConnection(service)) return service.PrintMessage("0159", std::string(), std::string());
    service.setWBPerformeConnect(true);
  } else if (value == QLatin1String("false")) {
    service.setWBPerformeConnect(false);
  } else {
    service.PrintMessage("0160", typed, std::string());
  }
}

void setEndian(IstComData& service, const istWishboneMaster& master, const std::string& typed) {
  const QString value = toServiceTrimmed(typed).toLower();
  if (value == QLatin1String("big")) {
    service.setWBEdianMode(mero::ostrel::ENDIAN_BIG);
  } else if (value == QLatin1String("little")) {
    if (master.bigEndianOnly) return service.PrintMessage("0161", typed, std::string());
    service.setWBEdianMode(mero::ostrel::ENDIAN_LITTLE);
  } else {
    service.PrintMessage("0162", typed, std::string());
  }
}

/// Unlike the trace and trigger options: other codes, no family word, and an unknown name is not passed on.
void collectOptions(const CommandCall& call, OptionList& options) {
  for (int i = 1; i < call.wordCount(); ++i) {
    std::string name, value;
    if (!splitOptionWord(call.word(i), name, value)) {
      call.printNumbered("0163");
      continue;
    }
    OptionEntry* entry = options.find(name);
    if (!entry) {
      call.printNumbered("0164");
      continue;
    }
    if (entry->set) call.printNumbered("0165", name);  // the later value wins
    entry->value = value;
    entry->set = true;
  }
}

}  // namespace

void generate_wbone_option_list(OptionList& options) {
  options.append("PerformConnect");
  options.append("Endian");
}

void listWboneOptions(IstComData* data, istWishboneMaster*, QString& text) {
  text = QString::fromLatin1("PerformConnect = ");
  text += QLatin1String(data->getWBPerformeConnect() ? "true\n" : "false\n");
  text += QLatin1String("Endian = ");
  text += QLatin1String(data->getWBEdianMode() == 0 ? "big\n" : "little\n");
}

int setWboneOptions(IstComData* data, istWishboneMaster* master, OptionList& options, QString&) {
  for (std::size_t i = 0; i < options.size(); ++i) {
    const OptionEntry& entry = options.at(i);
    if (!entry.set) continue;
    if (i == 0) setPerformConnect(*data, entry.value);
    if (i == 1) setEndian(*data, *master, entry.value);
  }
  return 0;
}

/// `[PerformConnect=<true|false>] [Endian=<big|little>]` after the sub-command word under which a host registers it
///
/// Every word is an option word, even `-core`. Result: without words the current settings (also while the project is
/// busy), else empty. Rejected options never fail the command.
OST_HANDLER(ost_set_wbone_opt) {
  CommandCall call(clientData, interp, argc, argv);
  if (!call.contextIsValid()) return TCL_ERROR;
  if (!call.projectIsOpen()) return TCL_ERROR;
  istWishboneMaster* master = call.service().getWishboneMaster();
  if (!master) return call.failWith("Wishbone Master is not used in project.");

  QString text;
  if (call.wordCount() == 1) {
    listWboneOptions(&call.service(), master, text);
    if (!text.isEmpty()) call.setResult(text);
    return TCL_OK;
  }

  if (!call.projectIsIdle()) return TCL_ERROR;
  OptionList options;
  generate_wbone_option_list(options);
  collectOptions(call, options);
  setWboneOptions(&call.service(), master, options, text);
  call.showServiceText(text);
  return TCL_OK;
}

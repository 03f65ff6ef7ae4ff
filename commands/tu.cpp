// `ost_tu`: the trigger units of a core's dataset. Signals, operators, values and radices are checked by the service;
// here definitions are only split.
#include "commands/dataset_entries.h"
#include "commands/handlers.h"
#include "framework/text.h"

using mero::ostrel::istDataset;
using mero::ostrel::istTU;
using namespace ost_command;

namespace {

/// "bin", "oct", "dec" and "hex" in any case as the service spells them; any other word unchanged.
QString serviceRadix(const std::string& word) {
  static const char* const radices[] = {"Bin", "Oct", "Dec", "Hex"};
  const QString typed = toService(word);
  for (const char* radix : radices)
    if (typed.compare(QLatin1String(radix), Qt::CaseInsensitive) == 0) return QString::fromLatin1(radix);
  return typed;
}

/// A definition "{signals} operator value" in its three parts, which stay as typed.
struct UnitDefinition {
  QString signalList, op, value;
};

/// False, reported, when `word` is not a list of three elements.
bool splitDefinition(const CommandCall& call, const std::string& word, UnitDefinition& definition) {
  QStringList parts;
  if (!splitList(word, parts) || parts.size() != 3) {
    call.valueError(word, "Invalid trigger unit expression format.\nIt should be \"{signal list} operator value\".");
    return false;
  }
  definition.signalList = parts.at(0);
  definition.op = parts.at(1);
  definition.value = parts.at(2);
  return true;
}

/// The changes that `ost_tu set` passes to the service; what is empty stays as it is.
struct UnitChange {
  QString op, value;
  std::string signalsToAdd, signalsToRemove;  ///< Tcl lists.
  bool replacesSignals;                       ///< signalsToAdd replaces all signals.
};

void warnIgnored(const CommandCall& call, const char* option, const char* because) {
  call.show(std::string("WARNING: The \"") + option + "\" option is ignored because of option \"" + because + "\".\n");
}

/// Drops the given options in favour of `-expr`, whose signal list is not used: `-expr` never changes signals.
void preferDefinition(const CommandCall& call, const UnitDefinition& definition, UnitChange& change) {
  static const char* const ignored[] = {"op", "val", "add_sig", "del_sig", "set_sig"};
  change.op = definition.op;
  change.value = definition.value;
  for (const char* name : ignored)
    if (!call.option(name).empty()) warnIgnored(call, name, "expr");
}

/// A conflict of `-set_sig` drops both the other option and `-set_sig`, with one warning: with all three given,
/// `-del_sig` is still applied.
void combineOptions(const CommandCall& call, UnitChange& change) {
  change.op = toService(call.option("op"));
  change.value = toService(call.option("val"));
  change.signalsToAdd = call.option("add_sig");
  change.signalsToRemove = call.option("del_sig");
  const std::string newSignals = call.option("set_sig");
  if (newSignals.empty()) return;
  if (!change.signalsToAdd.empty()) {
    warnIgnored(call, "add_sig", "set_sig");
    change.signalsToAdd.clear();
  } else if (!change.signalsToRemove.empty()) {
    warnIgnored(call, "del_sig", "set_sig");
    change.signalsToRemove.clear();
  } else {
    change.signalsToAdd = newSignals;
    change.replacesSignals = true;
  }
}

}  // namespace

/// `ost_tu list [-core <core>]`
OST_HANDLER(ost_list_tu) {
  CommandCall call(clientData, interp, argc, argv);
  return listEntries(call, kTriggerUnits);
}

/// `ost_tu add [-core <core>] [-radix <radix>] [-name <name>] [<definition>]`
///
/// Result: the unit's name, a default one when none was given. The service's text is not shown.
OST_HANDLER(ost_add_tu) {
  CommandCall call(clientData, interp, argc, argv);
  if (!call.contextIsValid()) return TCL_ERROR;
  if (!call.projectIsOpen()) return TCL_ERROR;
  if (!call.projectIsIdle()) return TCL_ERROR;
  call.declareOption("core").declareOption("name").declareOption("radix");
  if (!call.parse(0, 1)) return TCL_ERROR;
  istDataset* dataset = call.resolveDataset();
  if (!dataset) return TCL_ERROR;

  QString radix = serviceRadix(call.option("radix"));
  const std::string requestedName = call.option("name");
  if (!entryNameIsFree(call, kTriggerUnits, requestedName, dataset)) return TCL_ERROR;

  UnitDefinition definition;
  QStringList signalNames;
  const std::string word = call.value(0);
  if (!word.empty()) {
    if (!splitDefinition(call, word, definition)) return TCL_ERROR;
    if (!splitList(fromService(definition.signalList), signalNames)) return call.usageError();
  }

  QString name = toService(requestedName), message;
  if (!call.service().addTU(radix, signalNames, definition.op, definition.value, name, message, dataset))
    return call.failWith("Failed to add trigger unit");
  call.setResult(name);
  return TCL_OK;
}

/// `ost_tu set [-core <core>] [-radix <radix>] -name <name> [-add_sig <signals>] [-del_sig <signals>]
///  [-set_sig <signals>] [-expr <definition>] [-op <operator>] [-val <value>]`
///
/// Result: empty. What the service objects to is shown and does not fail the command.
OST_HANDLER(ost_set_tu) {
  CommandCall call(clientData, interp, argc, argv);
  if (!call.contextIsValid()) return TCL_ERROR;
  if (!call.projectIsOpen()) return TCL_ERROR;
  if (!call.projectIsIdle()) return TCL_ERROR;
  call.declareOption("core").declareOption("name").declareOption("add_sig").declareOption("del_sig");
  call.declareOption("set_sig").declareOption("expr").declareOption("op").declareOption("val").declareOption("radix");
  if (!call.parse(0, 0)) return TCL_ERROR;
  istDataset* dataset = call.resolveDataset();
  if (!dataset) return TCL_ERROR;

  const std::string name = call.option("name");
  if (name.empty()) return call.usageError();
  istTU* unit = call.service().getTU(toService(name), dataset);
  if (!unit) return call.fail({"The TU '", name.c_str(), "' does not exist."});

  UnitChange change = {QString(), QString(), std::string(), std::string(), false};
  const std::string expression = call.option("expr");
  if (!expression.empty()) {
    UnitDefinition definition;
    if (!splitDefinition(call, expression, definition)) return TCL_ERROR;
    preferDefinition(call, definition, change);
  } else {
    combineOptions(call, change);
  }

  QStringList added, removed;
  if (!splitList(change.signalsToAdd, added)) return call.usageError();
  if (!splitList(change.signalsToRemove, removed)) return call.usageError();
  if (change.replacesSignals) removed.append(QString());  // one empty name: replace all signals

  QString radix = serviceRadix(call.option("radix")), message;
  call.service().setTU(unit, radix, added, removed, change.op, change.value, message, dataset);
  call.showServiceText(message);
  return TCL_OK;
}

/// `ost_tu rename [-core <core>] <old name> <new name>`
OST_HANDLER(ost_ren_tu) {
  CommandCall call(clientData, interp, argc, argv);
  return renameEntry(call, kTriggerUnits);
}

/// `ost_tu remove [-core <core>] <name>`
OST_HANDLER(ost_del_tu) {
  CommandCall call(clientData, interp, argc, argv);
  return removeEntry(call, kTriggerUnits);
}

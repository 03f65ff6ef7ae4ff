// `ost_te`: the trigger expressions of a core's dataset. Expression texts are the service's; the hardware settings are
// checked here.
#include "commands/dataset_entries.h"
#include "commands/handlers.h"
#include "framework/text.h"

using mero::ostrel::istDataset;
using namespace ost_command;

namespace {

/// The hardware settings as the service takes them.
struct ExpressionSettings {
  int ram;               ///< 1 EBR, 0 slices.
  int maxSequenceDepth;  ///< 1 to 16, a power of two.
  int maxEventCount;     ///< 1 to 65536, a power of two.
};

bool readRam(const CommandCall& call, int& ram) {
  const QString word = toService(call.option("ram"));
  if (word.isEmpty()) return true;
  if (word.compare(QLatin1String("EBR"), Qt::CaseInsensitive) == 0) {
    ram = 1;
  } else if (word.compare(QLatin1String("Slice"), Qt::CaseInsensitive) == 0) {
    ram = 0;
  } else {
    call.valueError("-ram", "The parameter value must be \"EBR\" or \"Slice\".");
    return false;
  }
  return true;
}

/// Reads the powers of two from 1 to `most`; an absent or blank option leaves `number`.
bool readPowerOfTwo(const CommandCall& call, const char* option, int most, const char* objection, int& number) {
  const QString text = toServiceTrimmed(call.option(option));
  if (text.isEmpty()) return true;
  bool isNumber = false;
  const int typed = text.toInt(&isNumber, 10);
  if (!isNumber || typed < 1 || typed > most || (typed & (typed - 1)) != 0) {
    call.valueError(std::string("-") + option, objection);
    return false;
  }
  number = typed;
  return true;
}

/// Reads what was given into `settings`; false, reported, at the first wrong value.
bool readSettings(const CommandCall& call, ExpressionSettings& settings) {
  return readRam(call, settings.ram) &&
         readPowerOfTwo(call, "max_seq_depth", 16, "The parameter value must be 1, 2, 4, 8 or 16.",
                        settings.maxSequenceDepth) &&
         readPowerOfTwo(call, "max_event_count", 65536,
                        "The parameter value must be the number in the range of 1, 2, 4, 8, ... 65536.",
                        settings.maxEventCount);
}

}  // namespace

/// `ost_te list [-core <core>]`
OST_HANDLER(ost_list_te) {
  CommandCall call(clientData, interp, argc, argv);
  return listEntries(call, kTriggerExpressions);
}

/// `ost_te add [-core <core>] [-ram <EBR|Slice>] [-name <name>] [-expression <text>] [-max_seq_depth <depth>]
///  [-max_event_count <count>]`
///
/// Result: the expression's name, a default one when none was given.
OST_HANDLER(ost_add_te) {
  CommandCall call(clientData, interp, argc, argv);
  if (!call.contextIsValid()) return TCL_ERROR;
  if (!call.projectIsOpen()) return TCL_ERROR;
  if (!call.projectIsIdle()) return TCL_ERROR;
  call.declareOption("core").declareOption("name").declareOption("ram").declareOption("expression");
  call.declareOption("max_seq_depth").declareOption("max_event_count");
  if (!call.parse(0, 0)) return TCL_ERROR;
  istDataset* dataset = call.resolveDataset();
  if (!dataset) return TCL_ERROR;

  const std::string requestedName = call.option("name");
  if (!entryNameIsFree(call, kTriggerExpressions, requestedName, dataset)) return TCL_ERROR;
  const QString expression = toService(call.option("expression"));
  ExpressionSettings settings = {0, 0, 0};  // slices, and the service's default depth and count
  if (!readSettings(call, settings)) return TCL_ERROR;

  QString name = toService(requestedName), message;
  const bool added = call.service().addTE(name, expression, settings.ram, settings.maxSequenceDepth,
                                          settings.maxEventCount, message, dataset);
  call.showServiceText(message);
  if (!added) return call.failWith("Failed to add trigger expression");
  call.setResult(name);
  return TCL_OK;
}

/// `ost_te set [-core <core>] [-ram <EBR|Slice>] [-expression <text>] [-max_seq_depth <depth>]
///  [-max_event_count <count>] <name>`
///
/// Result: empty, also when the service refuses the change.
OST_HANDLER(ost_set_te) {
  CommandCall call(clientData, interp, argc, argv);
  if (!call.contextIsValid()) return TCL_ERROR;
  if (!call.projectIsOpen()) return TCL_ERROR;
  if (!call.projectIsIdle()) return TCL_ERROR;
  call.declareOption("core").declareOption("ram").declareOption("expression");
  call.declareOption("max_seq_depth").declareOption("max_event_count");
  if (!call.parse(1, 1)) return TCL_ERROR;
  istDataset* dataset = call.resolveDataset();
  if (!dataset) return TCL_ERROR;

  const std::string knownName = call.value(0);
  if (!entryExists(call, kTriggerExpressions, knownName, dataset)) return TCL_ERROR;
  const QString expression = toService(call.option("expression"));
  ExpressionSettings settings = {-1, -1, -1};  // unchanged
  if (!readSettings(call, settings)) return TCL_ERROR;

  QString name = toService(knownName), message;
  const bool changed = call.service().setTE(name, expression, settings.ram, settings.maxSequenceDepth,
                                            settings.maxEventCount, message, dataset);
  call.showServiceText(message);
  return changed ? TCL_OK : TCL_ERROR;
}

/// `ost_te rename [-core <core>] <old name> <new name>`
OST_HANDLER(ost_ren_te) {
  CommandCall call(clientData, interp, argc, argv);
  return renameEntry(call, kTriggerExpressions);
}

/// `ost_te remove [-core <core>] <name>`
OST_HANDLER(ost_del_te) {
  CommandCall call(clientData, interp, argc, argv);
  return removeEntry(call, kTriggerExpressions);
}

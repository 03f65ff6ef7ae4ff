// Listing, renaming and removing trigger units and trigger expressions.
#include "commands/dataset_entries.h"

#include "framework/text.h"

using mero::ostrel::IstComData;
using mero::ostrel::istDataset;

namespace ost_command {

const DatasetEntryKind kTriggerUnits = {
    &IstComData::getTUNameList, &IstComData::isTUNameUsed, &IstComData::renameTU,          &IstComData::removeTU,
    "The trigger unit '",       "The new TU name '",       "Failed to rename trigger unit"};

const DatasetEntryKind kTriggerExpressions = {&IstComData::getTENameList,
                                              &IstComData::isTENameUsed,
                                              &IstComData::renameTE,
                                              &IstComData::removeTE,
                                              "The trigger expression '",
                                              "The new TE name '",
                                              "Failed to rename trigger expression"};

bool entryExists(const CommandCall& call, const DatasetEntryKind& kind, const std::string& name, istDataset* dataset) {
  if ((call.service().*kind.isUsed)(toService(name), dataset)) return true;
  call.fail({kind.unknownStart, name.c_str(), "' does not exist."});
  return false;
}

bool entryNameIsFree(const CommandCall& call, const DatasetEntryKind& kind, const std::string& name,
                     istDataset* dataset) {
  if (name.empty() || !(call.service().*kind.isUsed)(toService(name), dataset)) return true;
  call.fail({kind.usedStart, name.c_str(), "' has been already used."});
  return false;
}

int listEntries(CommandCall& call, const DatasetEntryKind& kind) {
  if (!call.contextIsValid()) return TCL_ERROR;
  if (!call.projectIsOpen()) return TCL_ERROR;
  if (!call.declareOption("core").parse(0, 0)) return TCL_ERROR;
  istDataset* dataset = call.resolveDataset();
  if (!dataset) return TCL_ERROR;

  const std::vector<std::string> names = (call.service().*kind.names)(dataset);
  for (const std::string& name : names) Tcl_AppendElement(call.interp(), name.c_str());
  return TCL_OK;
}

int renameEntry(CommandCall& call, const DatasetEntryKind& kind) {
  if (!call.contextIsValid()) return TCL_ERROR;
  if (!call.projectIsOpen()) return TCL_ERROR;
  if (!call.projectIsIdle()) return TCL_ERROR;
  if (!call.declareOption("core").parse(2, 2)) return TCL_ERROR;
  istDataset* dataset = call.resolveDataset();
  if (!dataset) return TCL_ERROR;

  const std::string oldName = call.value(0);
  if (!entryExists(call, kind, oldName, dataset)) return TCL_ERROR;
  const std::string newName = call.value(1);
  if (newName == oldName) return TCL_OK;

  QString message;
  const bool renamed = (call.service().*kind.rename)(toService(oldName), toService(newName), message, dataset);
  call.showServiceText(message);
  if (!renamed) return call.failWith(kind.renameFailed);
  call.setResult(newName);
  return TCL_OK;
}

int removeEntry(CommandCall& call, const DatasetEntryKind& kind) {
  if (!call.contextIsValid()) return TCL_ERROR;
  if (!call.projectIsOpen()) return TCL_ERROR;
  if (!call.projectIsIdle()) return TCL_ERROR;
  if (!call.declareOption("core").parse(1, 1)) return TCL_ERROR;
  istDataset* dataset = call.resolveDataset();
  if (!dataset) return TCL_ERROR;

  const std::string name = call.value(0);
  if (!entryExists(call, kind, name, dataset)) return TCL_ERROR;
  (call.service().*kind.remove)(toService(name), dataset);
  return TCL_OK;
}

}  // namespace ost_command

// What trigger units and trigger expressions have in common: listing, renaming and removing by name.
#pragma once

#include <QString>
#include <string>
#include <vector>

#include "framework/command_call.h"

namespace ost_command {

/// One of the two kinds of named entries in a core's dataset: its operations of the service and its texts.
struct DatasetEntryKind {
  std::vector<std::string> (mero::ostrel::IstComData::*names)(mero::ostrel::istDataset*);
  bool (mero::ostrel::IstComData::*isUsed)(const QString&, mero::ostrel::istDataset*);
  bool (mero::ostrel::IstComData::*rename)(const QString&, const QString&, QString&, mero::ostrel::istDataset*);
  bool (mero::ostrel::IstComData::*remove)(const QString&, mero::ostrel::istDataset*);
  const char* unknownStart;  ///< Before the name of an entry that does not exist.
  const char* usedStart;     ///< Before the new name that is taken already.
  const char* renameFailed;
};

extern const DatasetEntryKind kTriggerUnits;
extern const DatasetEntryKind kTriggerExpressions;

/// Result: the names in dataset order. Works while the project is busy.
int listEntries(CommandCall& call, const DatasetEntryKind& kind);
/// Result: the new name; renaming to the same name changes nothing and leaves the result empty.
int renameEntry(CommandCall& call, const DatasetEntryKind& kind);
int removeEntry(CommandCall& call, const DatasetEntryKind& kind);

/// False, reported, when there is no entry `name`.
bool entryExists(const CommandCall& call, const DatasetEntryKind& kind, const std::string& name,
                 mero::ostrel::istDataset* dataset);
/// False, reported, when the non-empty `name` is taken; an empty one asks the service for a default.
bool entryNameIsFree(const CommandCall& call, const DatasetEntryKind& kind, const std::string& name,
                     mero::ostrel::istDataset* dataset);

}  // namespace ost_command

// The options of `ost_design read`: one table, from which the command, the file lists and the help are made.
#pragma once

#include <QString>
#include <vector>

#include "platform/design/design.h"

namespace ost {

struct ReadOption {
  const char* name;
  const char* value;  ///< What follows, as the help calls it.
  const char* help;
  bool inLists;  ///< A file list may hold it, too.
  /// Keeps the value, which is not empty; relative names mean `folder` ("" or with its closing '/'). False with what
  /// the value must be.
  bool (*take)(DesignSource& source, const QString& value, const QString& folder, QString& mustBe);
};

/// Whether the way to the debug hub is a word, and not the name of a file.
ISTCOMDATA_API bool isJtagWord(const QString& way);

/// All options, in the order of the help.
ISTCOMDATA_API const std::vector<ReadOption>& readOptions();
/// The option of that name, or null.
ISTCOMDATA_API const ReadOption* findReadOption(const QString& name);

}  // namespace ost

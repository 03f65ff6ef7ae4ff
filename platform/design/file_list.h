// File lists (.f): files, folders, macros and options, a few to a line.
#pragma once

#include "platform/design/design.h"

namespace ost {

/// What the lists hold, all in byte text; relative names are made absolute against their list's folder.
struct FileListContent : DesignSource {
  QStringList lists;  ///< Every list read, nested ones among them, as absolute names.
};

/// Reads a list and those it names with `-f`. A word is a file, `+incdir+DIR[+DIR]`, `+define+NAME[=VALUE][+...]`,
/// `+libext+SUFFIX[+SUFFIX]`, `-f LIST` or an option of readOptions() that lists may hold, with its value; words are
/// separated by blanks; double quotes hold blanks together, and two of them within quotes are one of the word; `//` and
/// `#` begin a comment where a word could begin. False with list and line in `error`.
bool readFileList(const QString& absoluteName, FileListContent& content, QString& error);

}  // namespace ost

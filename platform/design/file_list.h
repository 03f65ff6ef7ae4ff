// File lists (.f): files, include folders and macros, a few to a line.
#pragma once

#include <QString>
#include <QStringList>

namespace ost {

/// What the lists hold, all in byte text; relative names are made absolute against their list's folder.
struct FileListContent {
  QStringList files, includeDirs, defines;
  QStringList lists;  ///< Every list read, nested ones among them, as absolute names.
};

/// Reads a list and those it names with `-f`. A word is a file, `+incdir+DIR[+DIR]`, `+define+NAME[=VALUE][+...]` or
/// `-f LIST`; words are separated by blanks, and double quotes hold blanks together; `//` and `#` begin a comment where
/// a word could begin. False with list and line in `error`.
bool readFileList(const QString& absoluteName, FileListContent& content, QString& error);

}  // namespace ost

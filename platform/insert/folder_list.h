// Folders of an insertion by their list of files, through descriptors: what belongs to the insertion, what somebody put
// there or changed, and what dead runs left.
#pragma once

#include <QByteArray>
#include <QHash>
#include <QSet>

#include "platform/system/descriptor.h"

namespace ost {

inline const char kListName[] = "ostrel_files.txt";
// No file name has a '/', and earlier versions skip lines with one.
inline const char kProjectKey[] = "project/";
inline const char kDigestKey[] = "digest/";  ///< Then the digest of a file's contents, '/' and its name.

/// What the list of a folder says about it.
struct FolderList {
  QSet<QByteArray> files;
  QByteArray project;  ///< Empty when unknown.
  QHash<QByteArray, QByteArray> digests;
};

/// Follows no link; closed, with errno, when it cannot be opened.
Descriptor openFolder(int parent, const QByteArray& name);
/// Without a list nothing in the folder is the insertion's own.
FolderList readList(int folder);
/// The first entry that the folder's list does not name; empty when all are the insertion's own. False with errno.
bool findForeign(int folder, QByteArray& foreign);
/// Of a file's contents, to tell whether somebody changed it; empty when it cannot be read.
QByteArray digestOf(int folder, const QByteArray& name);
/// A file of the insertion's own that somebody has changed since; empty when there is none.
QByteArray findChanged(int folder);
/// Whether the name still leads to the open folder.
bool isNameOf(int parent, const QByteArray& name, int folder);
/// Removes the files of the folder's list, the list last, and the folder if nothing else is in it.
bool removeOwn(int parent, const QByteArray& name, int folder);
/// False with errno.
bool renameIn(int parent, const QByteArray& from, const QByteArray& to);
bool existsIn(int parent, const QByteArray& name);
/// Removes what dead runs left beside the target: "<target>.new-<tag>" and "<target>.old-<tag>".
void clearLeftovers(int parent, const QByteArray& target);

}  // namespace ost

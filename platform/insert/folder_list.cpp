// Reading the list of a folder, and what follows from it.
#include "platform/insert/folder_list.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QCryptographicHash>
#include <QFile>

#include "platform/system/files.h"
#include "platform/system/process_mark.h"

namespace ost {
namespace {

constexpr qint64 kMaxListBytes = 1 << 20;

}  // namespace

Descriptor openFolder(int parent, const QByteArray& name) {
  return Descriptor(openat(parent, name.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

FolderList readList(int folder) {
  FolderList list;
  const Descriptor file(openat(folder, kListName, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  QByteArray text;
  QString ignored;  // Without a list nothing in the folder is the insertion's own.
  if (!file.isOpen() || !readOpenFile(file.fd(), kMaxListBytes, text, ignored)) return list;
  for (const QByteArray& line : text.split('\n')) {
    if (line.startsWith(kProjectKey))
      list.project = QByteArray::fromPercentEncoding(line.mid(int(sizeof kProjectKey) - 1));
    if (line.startsWith(kDigestKey)) {
      const QByteArray rest = line.mid(int(sizeof kDigestKey) - 1);
      list.digests.insert(rest.mid(rest.indexOf('/') + 1), rest.left(rest.indexOf('/')));
    }
    if (!line.isEmpty() && !line.contains('/')) list.files.insert(line);
  }
  list.files.insert(kListName);
  return list;
}

bool findForeign(int folder, QByteArray& foreign) {
  const FolderList list = readList(folder);
  QList<QByteArray> names;
  if (!listFolder(folder, names)) return false;
  for (const QByteArray& name : names) {
    struct stat info;
    const bool isFolder = fstatat(folder, name.constData(), &info, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(info.st_mode);
    if (!list.files.contains(name) || isFolder) foreign = name;
    if (!foreign.isEmpty()) break;
  }
  return true;
}

QByteArray digestOf(int folder, const QByteArray& name) {
  Descriptor file(openat(folder, name.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  QFile contents;
  QCryptographicHash hash(QCryptographicHash::Sha1);
  const bool read = file.isOpen() && contents.open(file.fd(), QIODevice::ReadOnly) && hash.addData(&contents);
  return read ? hash.result().toHex() : QByteArray();
}

QByteArray findChanged(int folder) {
  const FolderList list = readList(folder);
  for (auto file = list.digests.begin(); file != list.digests.end(); ++file) {
    const QByteArray now = digestOf(folder, file.key());
    if (!now.isEmpty() && now != file.value()) return file.key();
  }
  return QByteArray();
}

bool isNameOf(int parent, const QByteArray& name, int folder) {
  struct stat named, open;
  return fstatat(parent, name.constData(), &named, AT_SYMLINK_NOFOLLOW) == 0 && fstat(folder, &open) == 0 &&
         named.st_dev == open.st_dev && named.st_ino == open.st_ino;
}

bool removeOwn(int parent, const QByteArray& name, int folder) {
  FolderList list = readList(folder);
  list.files.remove(kListName);
  if (!isNameOf(parent, name, folder)) return false;
  for (const QByteArray& file : list.files) unlinkat(folder, file.constData(), 0);
  unlinkat(folder, kListName, 0);
  return unlinkat(parent, name.constData(), AT_REMOVEDIR) == 0;
}

bool renameIn(int parent, const QByteArray& from, const QByteArray& to) {
  return renameat(parent, from.constData(), parent, to.constData()) == 0;
}

bool existsIn(int parent, const QByteArray& name) {
  struct stat info;
  return fstatat(parent, name.constData(), &info, AT_SYMLINK_NOFOLLOW) == 0;
}

void clearLeftovers(int parent, const QByteArray& target) {
  const Descriptor listed = openFolder(parent, ".");
  // A run died between its two renames: the old folder is still the current one.
  for (const QByteArray& name : leftBehind(listed.fd(), target + ".old-"))
    if (!existsIn(parent, target) && openFolder(parent, name).isOpen()) renameIn(parent, name, target);
  for (const char* kind : {".old-", ".new-"})
    for (const QByteArray& name : leftBehind(listed.fd(), target + kind)) {
      const Descriptor folder = openFolder(parent, name);
      if (folder.isOpen()) removeOwn(parent, name, folder.fd());
    }
}

}  // namespace ost

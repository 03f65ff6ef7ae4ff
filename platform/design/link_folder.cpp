// Link folders, and which of them nobody uses any more.
#include "platform/design/link_folder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFileInfo>
#include <ctime>

namespace ost {
namespace {

const char kNamePrefix[] = "ost-links-";
constexpr int kYoungSeconds = 60;  // A folder may be this old before it is locked.

int openFolder(const QString& path) {
  return open(QFile::encodeName(path).constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
}

/// Removes a folder that this user made, that no process has locked, and that holds nothing but links.
void removeIfLeft(const QString& path) {
  const int folder = openFolder(path);
  if (folder < 0) return;
  struct stat status;
  if (fstat(folder, &status) == 0 && status.st_uid == geteuid() &&
      std::time(nullptr) - status.st_mtime > kYoungSeconds && flock(folder, LOCK_EX | LOCK_NB) == 0) {
    for (const QFileInfo& entry : QDir(path).entryInfoList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot))
      if (entry.isSymLink()) QFile::remove(entry.filePath());
    QDir().rmdir(path);
  }
  close(folder);
}

/// Where the next folder goes, once those that were left are gone.
QString freshTemplate() {
  const QDir temporary(QDir::tempPath());
  const QString prefix = QString::fromLatin1(kNamePrefix);
  for (const QString& name : temporary.entryList({prefix + QLatin1Char('*')}, QDir::Dirs | QDir::NoSymLinks))
    removeIfLeft(temporary.filePath(name));
  return temporary.filePath(prefix + QString::fromLatin1("XXXXXX"));
}

}  // namespace

LinkFolder::LinkFolder() : folder_(freshTemplate()) {
  if (!folder_.isValid()) return;
  lock_ = openFolder(folder_.path());
  if (lock_ >= 0) flock(lock_, LOCK_EX | LOCK_NB);
}

LinkFolder::~LinkFolder() {
  if (lock_ >= 0) close(lock_);
}

QByteArray LinkFolder::path() const {
  return QFile::encodeName(folder_.path());
}

bool LinkFolder::add(const QByteArray& name, const QByteArray& target) const {
  return folder_.isValid() && symlink(target.constData(), (path() + '/' + name).constData()) == 0;
}

}  // namespace ost

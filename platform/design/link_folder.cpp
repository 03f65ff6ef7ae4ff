// Link folders, and which of them nobody uses any more.
#include "platform/design/link_folder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFileInfo>
#include <ctime>

#include "platform/system/files.h"
#include "platform/text/byte_text.h"

namespace ost {
namespace {

const char kNamePrefix[] = "ost-links-";
constexpr int kYoungSeconds = 60;  // A folder may be this old before it is locked.

Descriptor openFolder(const QString& path) {
  return Descriptor(open(QFile::encodeName(path).constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

/// Removes a folder that this user made, that no process has locked, and that holds nothing but links and files.
void removeIfLeft(const QString& path) {
  const Descriptor folder = openFolder(path);
  if (!folder.isOpen()) return;
  struct stat status;
  if (fstat(folder.fd(), &status) == 0 && status.st_uid == geteuid() &&
      std::time(nullptr) - status.st_mtime > kYoungSeconds && flock(folder.fd(), LOCK_EX | LOCK_NB) == 0) {
    for (const QFileInfo& entry : QDir(path).entryInfoList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot))
      if (entry.isSymLink() || entry.isFile()) QFile::remove(entry.filePath());
    QDir().rmdir(path);
  }
}

/// Where the next folder goes, once those that were left are gone.
QString freshTemplate() {
  const QDir temporary(QDir::tempPath());
  const QString prefix = textFromBytes(kNamePrefix);
  for (const QString& name : temporary.entryList({prefix + QLatin1Char('*')}, QDir::Dirs | QDir::NoSymLinks))
    removeIfLeft(temporary.filePath(name));
  return temporary.filePath(prefix + QStringLiteral("XXXXXX"));
}

}  // namespace

LinkFolder::LinkFolder() : folder_(freshTemplate()) {
  if (!folder_.isValid()) return;
  lock_ = openFolder(folder_.path());
  if (lock_.isOpen()) flock(lock_.fd(), LOCK_EX | LOCK_NB);
}

QByteArray LinkFolder::path() const {
  return QFile::encodeName(folder_.path());
}

bool LinkFolder::add(const QByteArray& name, const QByteArray& target) const {
  return folder_.isValid() && symlink(target.constData(), (path() + '/' + name).constData()) == 0;
}

bool LinkFolder::write(const QByteArray& name, const QByteArray& content) const {
  const QByteArray path = this->path() + '/' + name;
  Descriptor file(open(path.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  return folder_.isValid() && file.isOpen() && writeAll(file.fd(), content.constData(), content.size()) && file.close();
}

}  // namespace ost

// Locks, reads and writes project files.
#include "platform/istcomdata/project_storage.h"

#include <unistd.h>

#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <vector>

#include "platform/istdata/names.h"
#include "platform/istdata/project_file.h"
#include "platform/istdata/wire_text.h"

namespace ost {

namespace {

QByteArray digestOf(const QByteArray& bytes) {
  return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256);
}

QString shown(const QString& file) {
  return quoted(wireFromFile(file));
}

/// One name for a file that is reached through links.
QString canonical(const QString& file) {
  const QFileInfo info(file);
  const QString existing = info.canonicalFilePath();
  if (!existing.isEmpty()) return existing;
  const QString folder = QFileInfo(info.path()).canonicalFilePath();
  return folder.isEmpty() ? file : folder + '/' + info.fileName();
}

/// The file that a save writes before it takes the project's place. Whoever has the lock may remove one.
QString savingName(const QString& target) {
  const QFileInfo info(target);
  return info.path() + "/." + info.fileName() + ".saving";
}

}  // namespace

HeldLock::~HeldLock() {
  // Qt would complain on standard error about a lock file that it cannot remove; it stays owned, for the process' end.
  static auto* orphans = new std::vector<std::unique_ptr<QLockFile>>;
  if (!QFileInfo::exists(path_)) orphans->push_back(std::move(lock_));
}

QString ProjectStorage::fileOf(const QString& wire, QString& error) {
  const QString file = fileFromWire(wire);
  if (wire.isEmpty())
    error = "The project file name is empty.";
  else if (QFile::encodeName(file) != wire.toLatin1())
    error = QString("The file name %1 cannot be used in this locale; name the file in plain ASCII.").arg(quoted(wire));
  else
    return QDir::cleanPath(QFileInfo(file).absoluteFilePath());
  return QString();
}

bool ProjectStorage::claim(const QString& file, Claim& claim, QString& error) const {
  claim.file = file;
  claim.lock.reset();
  const QString target = canonical(file);
  if (lock_ && target == canonical(file_)) return true;
  const QFileInfo info(target);
  const QString lockName = info.path() + "/." + info.fileName() + ".lock";
  auto lock = std::make_unique<QLockFile>(lockName);
  lock->setStaleLockTime(0);  // held as long as the project is open; a dead owner is noticed all the same
  if (lock->tryLock(0)) {
    QFile::remove(savingName(target));  // of a save that was killed
    claim.lock = std::make_unique<HeldLock>(std::move(lock), lockName);
    return true;
  }
  // A folder that takes no lock file takes no project file either: reading is harmless, writing says why it fails.
  if (lock->error() != QLockFile::LockFailedError) return true;
  qint64 pid = 0;
  QString host, program;
  lock->getLockInfo(&pid, &host, &program);
  error = QString("%1 is open in another process: %2, pid %3 on host %4. Close it there first, or use another file.")
              .arg(shown(file), toWire(program), QString::number(pid), toWire(host));
  return false;
}

bool ProjectStorage::read(const QString& file, QByteArray& bytes, QString& error) const {
  const QFileInfo info(file);
  QFile source(file);
  if (!info.exists())
    error = QString("There is no file %1.").arg(shown(file));
  else if (!info.isFile())
    error = QString("%1 is not a file.").arg(shown(file));
  else if (info.size() > kMaxProjectFileBytes)
    error = QString("%1 is no project file: it is larger than %2 MB.").arg(shown(file)).arg(kMaxProjectFileBytes >> 20);
  else if (!source.open(QIODevice::ReadOnly))
    error = QString("%1 cannot be read: %2.").arg(shown(file), toWire(source.errorString()));
  if (!error.isEmpty()) return false;
  bytes = source.readAll();
  return true;
}

bool ProjectStorage::write(const QString& file, const QByteArray& bytes, QString& error) const {
  const QFileInfo info(file);
  if (info.exists() && !info.isFile()) {
    error = QString("%1 is not a file.").arg(shown(file));
    return false;
  }
  // Not by QSaveFile: its files beside the project cannot be told from a user's, and it takes no notice of a disk that
  // fails when it is made to store what was written.
  const QString goal = canonical(file);
  QFile target(savingName(goal));
  QFile::remove(target.fileName());
  const auto permissions = info.exists() ? info.permissions() : QFile::Permissions();
  const bool written = target.open(QIODevice::WriteOnly | QIODevice::NewOnly) && target.write(bytes) == bytes.size() &&
                       target.flush() &&
                       (!permissions || target.permissions() == permissions || target.setPermissions(permissions)) &&
                       (fdatasync(target.handle()) == 0 || errno == EINVAL);
  if (written &&
      std::rename(QFile::encodeName(target.fileName()).constData(), QFile::encodeName(goal).constData()) == 0)
    return true;
  const int reason = errno;
  QString words = toWire(target.errorString());
  if (words == "Unknown error") words = wireFromBytes(std::strerror(reason));
  if (target.isOpen()) target.remove();
  error = QString("%1 cannot be written: %2. Choose another place for the file.").arg(shown(file), words);
  return false;
}

bool ProjectStorage::isUntouched(const QByteArray& bytes, QString& error) const {
  QByteArray onDisk;
  QString ignored;
  if (!QFileInfo::exists(file_) || !read(file_, onDisk, ignored)) return true;
  if (digestOf(onDisk) == digest_ || onDisk == bytes) return true;
  error = QString(
              "%1 has been changed on disk by somebody else since it was opened. Save under another name "
              "(ost_project save <file>), or replace it by naming it: ost_project save %2.")
              .arg(shown(file_), wireFromFile(file_));
  return false;
}

void ProjectStorage::adopt(Claim claim, const QByteArray& bytes) {
  const bool sameFile = lock_ && canonical(claim.file) == canonical(file_);
  if (!sameFile) lock_ = std::move(claim.lock);
  file_ = claim.file;
  noteWritten(bytes);
}

void ProjectStorage::noteWritten(const QByteArray& bytes) {
  digest_ = digestOf(bytes);
}

void ProjectStorage::release() {
  lock_.reset();
  file_.clear();
  digest_.clear();
}

}  // namespace ost

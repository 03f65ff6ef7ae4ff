// Locks, reads and writes project files.
#include "platform/istcomdata/project_storage.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>

#include "platform/istdata/project_file.h"
#include "platform/system/files.h"
#include "platform/text/byte_text.h"
#include "platform/text/names.h"

namespace ost {

namespace {

QByteArray digestOf(const QByteArray& bytes) {
  return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256);
}

const char kNoFolder[] =
    "the current folder has been removed. Change to a folder that exists (cd), or name the whole path.";

QString shown(const QString& file) {
  return quoted(textFromFile(file));
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

/// The whole name, since it has to be found.
QString shownWhole(const QString& file) {
  QString name = textFromFile(file);
  for (QChar& c : name)
    if (c < ' ' || c == QChar(0x7f)) c = '?';
  return "'" + name + "'";
}

/// What stands behind the project's name when it cannot be locked.
QString lockRefusal(const LockFile::Answer& answer, const QString& lockFile) {
  const QString shownLock = shownWhole(lockFile);
  if (answer.outcome == LockFile::Unclear)
    return QString(
               "cannot be locked: its lock file %1 does not tell who has the project (%2). Remove that file if nobody "
               "works on the project.")
        .arg(shownLock, answer.reason);
  if (answer.outcome != LockFile::Held)
    return QString("cannot be locked: %1. Choose another place for the file.").arg(answer.reason);
  const ProcessMark& holder = answer.holder;
  const bool elsewhere = holder.state() == ProcessMark::Elsewhere;
  const QString who = quoted(textFromBytes(holder.program)).remove('\'');
  return QString(
             "is open in another process%1: %2, pid %3 on host %4, since %5. Close it there first, or use another "
             "file; remove the lock file %6 if that process no longer works on it.")
      .arg(elsewhere ? ", which cannot be seen from here" : "", who, QString::number(holder.pid),
           quoted(textFromBytes(holder.host)).remove('\''), answer.since.toString("yyyy-MM-dd hh:mm:ss"), shownLock);
}

}  // namespace

QString ProjectStorage::fileOf(const QString& typed, QString& error) {
  const QString file = fileFromText(typed);
  if (typed.isEmpty())
    error = "The project file name is empty.";
  else if (QFile::encodeName(file) != typed.toLatin1())
    error = QString("The file name %1 cannot be used in this locale; name the file in plain ASCII.").arg(quoted(typed));
  else if (QFileInfo(file).isRelative() && !hasCurrentFolder())
    error = QString("The file name %1 leads nowhere: %2").arg(quoted(typed), kNoFolder);
  else
    return QDir::cleanPath(QFileInfo(file).absoluteFilePath());
  return QString();
}

QString ProjectStorage::outputFolderOf(const QString& typed, QString& error) {
  if (typed.isEmpty() && hasCurrentFolder()) return QDir::current().absoluteFilePath("untitled_debug");
  if (typed.isEmpty()) {
    error = QString("There is no place for the output: %1").arg(kNoFolder);
    return QString();
  }
  const QFileInfo file(fileFromText(typed));
  return file.absolutePath() + '/' + file.completeBaseName() + "_debug";
}

bool ProjectStorage::claim(const QString& file, Claim& claim, QString& error) const {
  claim.file = file;
  claim.lock.reset();
  const QString target = canonical(file);
  if (lock_ && target == canonical(file_) && lock_->isHeld()) return true;
  const QFileInfo info(target);
  auto lock = std::make_unique<LockFile>(info.path() + "/." + info.fileName() + ".lock");
  const LockFile::Answer answer = lock->take();
  // A folder that takes no lock file takes no project file either: reading is harmless, writing says why it fails.
  if (answer.outcome == LockFile::NoPlace) return true;
  if (answer.outcome != LockFile::Taken) {
    error = shown(file) + ' ' + lockRefusal(answer, lock->path());
    return false;
  }
  QFile::remove(savingName(target));  // of a save that was killed
  claim.lock = std::move(lock);
  return true;
}

bool ProjectStorage::claimAgain(QString& error) {
  Claim again;
  if (!claim(file_, again, error)) return false;
  if (again.lock) lock_ = std::move(again.lock);
  return true;
}

bool ProjectStorage::read(const QString& file, QByteArray& bytes, QString& error) const {
  const QFileInfo info(file);
  QString reason;
  if (info.exists() && !info.isFile())
    error = QString("%1 is not a file.").arg(shown(file));
  else if (readFile(file, kMaxProjectFileBytes, bytes, reason))
    return true;
  else if (!info.exists())
    error = QString("There is no file %1.").arg(shown(file));
  else
    error = QString("%1 cannot be read: %2.").arg(shown(file), reason);
  return false;
}

bool ProjectStorage::write(const QString& file, const QByteArray& bytes, QString& error) const {
  const QString goal = canonical(file);
  QString reason;
  if (replaceFile({goal, savingName(goal)}, bytes, reason)) return true;
  error = QString("%1 cannot be written: %2. Choose another place for the file.").arg(shown(file), reason);
  return false;
}

bool ProjectStorage::isUntouched(const QByteArray& bytes, QString& error) const {
  QByteArray onDisk;
  if (!QFileInfo::exists(file_)) return true;
  if (!read(file_, onDisk, error)) {
    error += " Save under another name (ost_project save <file>).";
    return false;
  }
  if (digestOf(onDisk) == digest_ || onDisk == bytes) return true;
  error = QString(
              "%1 has been changed on disk by somebody else since it was opened. Save under another name "
              "(ost_project save <file>), or replace it by naming it: ost_project save %2.")
              .arg(shown(file_), textFromFile(file_));
  return false;
}

void ProjectStorage::adopt(Claim claim, const QByteArray& bytes) {
  const bool hasLock = lock_ && canonical(claim.file) == canonical(file_);
  if (claim.lock || !hasLock) lock_ = std::move(claim.lock);
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

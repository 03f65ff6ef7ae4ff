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

QString noFolder() {
  return QStringLiteral(
      "the current folder has been removed. Change to a folder that exists (cd), or name the whole path.");
}

QString shown(const QString& file) {
  return quoted(textFromFile(file));
}

/// One name for a file that is reached through links.
QString canonical(const QString& file) {
  const QFileInfo info(file);
  const QString existing = info.canonicalFilePath();
  if (!existing.isEmpty()) return existing;
  const QString folder = QFileInfo(info.path()).canonicalFilePath();
  return folder.isEmpty() ? file : folder + QLatin1Char('/') + info.fileName();
}

/// The file that a save writes before it takes the project's place. Whoever has the lock may remove one.
QString savingName(const QString& target) {
  const QFileInfo info(target);
  return info.path() + QLatin1String("/.") + info.fileName() + QLatin1String(".saving");
}

/// The whole name, since it has to be found.
QString shownWhole(const QString& file) {
  QString name = textFromFile(file);
  for (QChar& c : name)
    if (c < QLatin1Char(' ') || c == QChar(0x7f)) c = QLatin1Char('?');
  return QLatin1Char('"') + name + QLatin1Char('"');
}

/// What stands behind the project's name when it cannot be locked.
QString lockRefusal(const LockFile::Answer& answer, const QString& lockFile) {
  const QString shownLock = shownWhole(lockFile);
  if (answer.outcome == LockFile::Unclear)
    return QStringLiteral(
               "cannot be locked: its lock file %1 does not tell who has the project (%2). Remove that file if nobody "
               "works on the project.")
        .arg(shownLock, answer.reason);
  if (answer.outcome != LockFile::Held)
    return QStringLiteral("cannot be locked: %1. Choose another place for the file.").arg(answer.reason);
  const ProcessMark& holder = answer.holder;
  const bool elsewhere = holder.state() == ProcessMark::Elsewhere;
  const QString who = quoted(textFromBytes(holder.program)).remove(QLatin1Char('"'));
  return QStringLiteral(
             "is open in another process%1: %2, pid %3 on host %4, since %5. Close it there first, or use another "
             "file; remove the lock file %6 if that process no longer works on it.")
      .arg(QLatin1String(elsewhere ? ", which cannot be seen from here" : ""), who, QString::number(holder.pid),
           quoted(textFromBytes(holder.host)).remove(QLatin1Char('"')),
           answer.since.toString(QStringLiteral("yyyy-MM-dd hh:mm:ss")), shownLock);
}

}  // namespace

bool ProjectStorage::fileOf(const QString& typed, QString& file, QString& error) {
  file = fileFromText(typed);
  if (typed.isEmpty())
    error = QStringLiteral("The project file name is empty.");
  else if (QFile::encodeName(file) != typed.toLatin1())
    error = QStringLiteral("The file name %1 cannot be used in this locale; name the file in plain ASCII.")
                .arg(quoted(typed));
  else if (QFileInfo(file).isRelative() && !hasCurrentFolder())
    error = QStringLiteral("The file name %1 leads nowhere: %2").arg(quoted(typed), noFolder());
  if (!error.isEmpty()) return false;
  file = QDir::cleanPath(QFileInfo(file).absoluteFilePath());
  return true;
}

bool ProjectStorage::outputFolderOf(const QString& typed, QString& folder, QString& error) {
  if (typed.isEmpty() && !hasCurrentFolder()) {
    error = QStringLiteral("There is no place for the output: %1").arg(noFolder());
    return false;
  }
  const QFileInfo file(fileFromText(typed));
  folder = typed.isEmpty() ? QDir::current().absoluteFilePath(QStringLiteral("untitled_debug"))
                           : file.absolutePath() + QLatin1Char('/') + file.completeBaseName() + QLatin1String("_debug");
  return true;
}

bool ProjectStorage::claim(const QString& file, Claim& claim, QString& error) const {
  claim.file = file;
  claim.lock.reset();
  const QString target = canonical(file);
  if (lock_ && target == canonical(file_) && lock_->isHeld()) return true;
  const QFileInfo info(target);
  auto lock = std::make_unique<LockFile>(info.path() + QLatin1String("/.") + info.fileName() + QLatin1String(".lock"));
  const LockFile::Answer answer = lock->take();
  // A folder that takes no lock file takes no project file either: reading is harmless, writing says why it fails.
  if (answer.outcome == LockFile::NoPlace) return true;
  if (answer.outcome != LockFile::Taken) {
    error = shown(file) + QLatin1Char(' ') + lockRefusal(answer, lock->path());
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
    error = QStringLiteral("%1 is not a file.").arg(shown(file));
  else if (readFile(file, kMaxProjectFileBytes, bytes, reason))
    return true;
  else if (!info.exists())
    error = QStringLiteral("There is no file %1.").arg(shown(file));
  else
    error = QStringLiteral("%1 cannot be read: %2.").arg(shown(file), reason);
  return false;
}

bool ProjectStorage::write(const QString& file, const QByteArray& bytes, QString& error) const {
  const QString goal = canonical(file);
  QString reason;
  if (replaceFile({goal, savingName(goal)}, bytes, reason)) return true;
  error = QStringLiteral("%1 cannot be written: %2. Choose another place for the file.").arg(shown(file), reason);
  return false;
}

bool ProjectStorage::isUntouched(const QByteArray& bytes, QString& error) const {
  QByteArray onDisk;
  if (!QFileInfo::exists(file_)) return true;
  if (!read(file_, onDisk, error)) {
    error += QLatin1String(" Save under another name (ost_project save <file>).");
    return false;
  }
  if (digestOf(onDisk) == digest_ || onDisk == bytes) return true;
  error = QStringLiteral(
              "%1 has been changed on disk by another program since it was opened. Save under another name "
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

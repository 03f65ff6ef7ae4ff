// Lock files: made in one step, and taken over by one process at a time.
#include "platform/system/lock_file.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <QThread>
#include <atomic>
#include <cerrno>

#include "platform/system/descriptor.h"
#include "platform/system/files.h"

namespace ost {
namespace {

constexpr int kAttempts = 100;
constexpr qint64 kMostBytes = 4096;
const char kFreshName[] = ".ost-lock-";  // Short: where even this is too long, so is a project's own name.

QByteArray folderOf(const QByteArray& path) {
  return path.left(path.lastIndexOf('/') + 1);
}

/// False with errno; EEXIST when there is one.
bool writeNew(const QByteArray& file, const QByteArray& text) {
  Descriptor fresh(open(file.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
  if (!fresh.isOpen()) return false;
  if (writeAll(fresh.fd(), text.constData(), text.size()) && storeAndClose(fresh)) return true;
  const int code = errno;
  unlink(file.constData());
  errno = code;
  return false;
}

/// Gives a complete file its place, if that is free. False with errno; the file is gone then.
bool putInPlace(const QByteArray& fresh, const QByteArray& place, const QByteArray& text) {
  if (renameat2(AT_FDCWD, fresh.constData(), AT_FDCWD, place.constData(), RENAME_NOREPLACE) == 0) return true;
  bool done = false;
  if (errno == EINVAL || errno == ENOSYS) {
    done = link(fresh.constData(), place.constData()) == 0;
    // Few file systems can do neither; there it takes two steps.
    if (!done && (errno == EPERM || errno == ENOTSUP || errno == ENOSYS || errno == EINVAL))
      done = writeNew(place, text);
  }
  const int code = errno;
  unlink(fresh.constData());
  errno = code;
  return done;
}

/// What processes left that were killed between the two.
void clearLeftovers(const QByteArray& folder) {
  const Descriptor open(::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!open.isOpen()) return;
  for (const QByteArray& name : leftBehind(open.fd(), kFreshName)) unlinkat(open.fd(), name.constData(), 0);
}

bool takesNoFile(int code) {
  return code == EACCES || code == EPERM || code == EROFS || code == ENOENT || code == ENOTDIR || code == ENAMETOOLONG;
}

LockFile::Answer failed(LockFile::Outcome outcome, const QString& reason) {
  LockFile::Answer answer;
  answer.outcome = outcome;
  answer.reason = reason;
  return answer;
}

}  // namespace

LockFile::~LockFile() {
  if (!text_.isEmpty() && pid_ == getpid() && isHeld()) unlink(QFile::encodeName(path_).constData());
}

bool LockFile::isHeld() const {
  QByteArray found;
  QString ignored;
  return !text_.isEmpty() && readFile(path_, kMostBytes, found, ignored) && found == text_;
}

bool LockFile::make() {
  static std::atomic<int> serial{0};
  const QByteArray place = QFile::encodeName(path_), fresh = folderOf(place) + kFreshName + ownTag() + '-';
  for (;;) {
    // The number distinguishes this lock from another one of this process, in case the file was removed meanwhile.
    const QByteArray number = QByteArray::number(++serial), text = ProcessMark::own().text() + number + '\n';
    if (!writeNew(fresh + number, text)) {
      if (errno == EEXIST) continue;
      return false;
    }
    if (!putInPlace(fresh + number, place, text)) return false;
    text_ = text;
    pid_ = getpid();
    return true;
  }
}

LockFile::Answer LockFile::take() {
  Answer answer;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    if (attempt > 1) QThread::msleep(10);
    if (make()) {
      clearLeftovers(folderOf(QFile::encodeName(path_)));
      answer.outcome = Taken;
      return answer;
    }
    if (errno != EEXIST) return failed(takesNoFile(errno) ? NoPlace : Failed, systemReason(errno));
    if (judge(answer)) return answer;
  }
  if (answer.outcome == Held) return answer;
  return failed(Failed, QStringLiteral("other processes take it at the same time"));
}

/// False when the lock's process has ended, so that the place is free or will be soon.
bool LockFile::judge(Answer& answer) const {
  const QByteArray place = QFile::encodeName(path_);
  const int how = O_NONBLOCK | O_NOFOLLOW | O_NOCTTY | O_CLOEXEC;
  Descriptor lock(open(place.constData(), O_RDWR | how));  // some file systems require write access for flock()
  if (!lock.isOpen() && errno != ENOENT && errno != ELOOP) lock.reset(open(place.constData(), O_RDONLY | how));
  if (!lock.isOpen()) {
    if (errno == ENOENT) return false;
    answer = failed(Unclear, errno == ELOOP ? QStringLiteral("it is a link") : systemReason(errno));
    return true;
  }
  struct stat info, now;
  QByteArray text;
  QString reason;
  if (!readOpenFile(lock.fd(), kMostBytes, text, reason) || fstat(lock.fd(), &info) != 0) {
    answer = failed(Unclear, reason.isEmpty() ? systemReason(errno) : reason);
    return true;
  }
  if (!ProcessMark::read(text, answer.holder)) {
    answer = failed(Unclear, QStringLiteral("it does not say who made it"));
    return true;
  }
  answer.since = QDateTime::fromSecsSinceEpoch(info.st_mtime);
  const ProcessMark::State state = answer.holder.state();
  if (state != ProcessMark::Gone) {
    answer.outcome = Held;
    return state != ProcessMark::Ending;
  }
  // A stale lock is removed only while it is flocked and still in its place, so that a newer one is never removed.
  if (flock(lock.fd(), LOCK_EX | LOCK_NB) != 0) {
    if (errno == EWOULDBLOCK) return false;
    answer = failed(Unclear, systemReason(errno));
    return true;
  }
  if (lstat(place.constData(), &now) != 0 || now.st_dev != info.st_dev || now.st_ino != info.st_ino) return false;
  if (unlink(place.constData()) == 0) return false;
  answer = failed(Unclear, systemReason(errno));
  return true;
}

}  // namespace ost

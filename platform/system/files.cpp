// Reads and replaces files by the system's own calls: Qt's classes pass over a close or a flush that fails.
#include "platform/system/files.h"

#include <fcntl.h>
#include <limits.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include <QFile>
#include <QFileInfo>
#include <cerrno>

#include "platform/system/descriptor.h"
#include "platform/text/byte_text.h"

namespace ost {
namespace {

constexpr qint64 kReadStep = 1 << 20;
constexpr int kWriteStep = 1 << 16;
constexpr int kNamesTried = 100;
const char kAccessList[] = "system.posix_acl_access";

bool refuse(QString& reason, const QString& text) {
  reason = text;
  return false;
}

bool refuse(QString& reason, const char* text) {
  return refuse(reason, QString::fromLatin1(text));
}

bool refuseBySystem(QString& reason) {
  reason = systemReason(errno);
  return false;
}

const char* kindOf(const struct stat& info) {
  if (S_ISDIR(info.st_mode)) return "it is a folder";
  if (S_ISFIFO(info.st_mode)) return "it is a FIFO, not a regular file";
  return "it is not a regular file";
}

QString tooLarge(qint64 mostBytes) {
  return mostBytes < 1 << 20 ? QStringLiteral("it is larger than %1 bytes").arg(mostBytes)
                             : QStringLiteral("it is larger than %1 MB").arg(mostBytes >> 20);
}

/// A regular file, or nothing with the reason.
Descriptor openToRead(const QString& file, struct stat& info, QString& reason) {
  // Non-blocking: a FIFO without a writer must not block the program.
  Descriptor source(open(QFile::encodeName(file).constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (!source.isOpen() || fstat(source.fd(), &info) != 0) {
    refuse(reason, errno == ENXIO ? QStringLiteral("it is not a regular file") : systemReason(errno));  // a socket
    source.reset();
  } else if (!S_ISREG(info.st_mode)) {
    refuse(reason, kindOf(info));
    source.reset();
  }
  return source;
}

/// A file that is removed again unless it is kept.
class TemporaryFile {
 public:
  ~TemporaryFile() {
    if (!name_.isEmpty()) unlink(name_.constData());
  }
  /// Creates the file, in place of a leftover of that name.
  bool make(const QByteArray& name, mode_t mode) {
    return (unlink(name.constData()) == 0 || errno == ENOENT) && create(name, mode);
  }
  /// Creates it under a free name.
  bool makeBeside(const QByteArray& place, mode_t mode) {
    for (int i = 0; i < kNamesTried; ++i) {
      if (create(place + ".new-" + QByteArray::number(getpid()) + '-' + QByteArray::number(i), mode)) return true;
      if (errno != EEXIST) return false;
    }
    return false;
  }
  /// Stores the bytes and puts the file into its place.
  bool keepAs(const QByteArray& place) {
    if (!storeAndClose(file_) || rename(name_.constData(), place.constData()) != 0) return false;
    name_.clear();
    // The file is visible in its place already. Storing the name on the disk, too, is best effort: nothing can be
    // undone.
    const Descriptor folder(
        open(place.left(place.lastIndexOf('/') + 1).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    fsync(folder.fd());
    return true;
  }
  int fd() const { return file_.fd(); }

 private:
  bool create(const QByteArray& name, mode_t mode) {
    file_.reset(open(name.constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode));
    if (file_.isOpen()) name_ = name;
    return file_.isOpen();
  }
  QByteArray name_;  ///< Empty when there is none, or when it is kept.
  Descriptor file_;
};

/// Gives the new file what protects the old one.
bool keepProtection(int fresh, const QByteArray& old, const struct stat& info, QString& reason) {
  struct stat now;
  if (fstat(fresh, &now) != 0) return refuseBySystem(reason);
  if ((now.st_uid != info.st_uid || now.st_gid != info.st_gid) && fchown(fresh, info.st_uid, info.st_gid) != 0)
    return refuse(reason, "it belongs to another user or group, which a new file in its place would not keep");
  char list[4096];
  const ssize_t size = getxattr(old.constData(), kAccessList, list, sizeof list);
  if (size < 0 && errno != ENODATA && errno != ENOTSUP) return refuseBySystem(reason);
  // The folder may have given the new file an access list that the old one does not have.
  if (size <= 0 && fremovexattr(fresh, kAccessList) != 0 && errno != ENODATA && errno != ENOTSUP)
    return refuseBySystem(reason);
  if (fchmod(fresh, info.st_mode & 07777) != 0) return refuseBySystem(reason);
  if (size > 0 && fsetxattr(fresh, kAccessList, list, size_t(size), 0) != 0)
    return refuse(reason, "its access list cannot be kept");
  return true;
}

bool writeInto(const QByteArray& special, const QByteArray& bytes, QString& reason) {
  Descriptor file(open(special.constData(), O_WRONLY | O_CLOEXEC | O_NOCTTY));
  if (!file.isOpen() || !writeAll(file.fd(), bytes.constData(), bytes.size()) || !file.close())
    return refuseBySystem(reason);
  return true;
}

/// Where bytes are to go.
struct Place {
  QByteArray name;
  struct stat info;
  bool exists = false;
  bool isSpecial = false;  ///< Written into, not replaced.
};

bool findPlace(const Replacement& request, Place& place, QString& reason) {
  const QString real = QFileInfo(request.file).canonicalFilePath();
  place.name = QFile::encodeName(real.isEmpty() ? request.file : real);
  place.exists = stat(place.name.constData(), &place.info) == 0;
  if (!place.exists && errno != ENOENT) return refuseBySystem(reason);
  if (!place.exists && lstat(place.name.constData(), &place.info) == 0)
    return refuse(reason, "it is a link that leads nowhere");
  if (place.exists && !S_ISREG(place.info.st_mode)) {
    place.isSpecial = request.mayBeSpecial && !S_ISDIR(place.info.st_mode);
    return place.isSpecial || refuse(reason, kindOf(place.info));
  }
  // Root may write anything, but a file without any write permission is meant to be protected.
  const bool mayWrite = !place.exists || faccessat(AT_FDCWD, place.name.constData(), W_OK, AT_EACCESS) == 0;
  if (!mayWrite && errno != EACCES) return refuseBySystem(reason);
  if (place.exists && (!mayWrite || !(place.info.st_mode & 0222)))
    return refuse(reason, "it is protected from writing");
  return true;
}

bool makeFresh(const Replacement& request, const Place& place, TemporaryFile& fresh, QString& reason) {
  // It must not be readable by others before it has the old file's mode.
  const mode_t mode = place.exists ? 0600 : 0666;
  const bool made = request.temporary.isEmpty() ? fresh.makeBeside(place.name, mode)
                                                : fresh.make(QFile::encodeName(request.temporary), mode);
  if (!made) return refuseBySystem(reason);
  return !place.exists || keepProtection(fresh.fd(), place.name, place.info, reason);
}

}  // namespace

FileWriter::FileWriter(Descriptor file) : file_(std::move(file)) {
  open(QIODevice::WriteOnly | QIODevice::Unbuffered);
}

bool FileWriter::flushBuffer() {
  if (!failure_ && !writeAll(file_.fd(), buffer_.constData(), buffer_.size())) failure_ = errno;
  buffer_.clear();
  return !failure_;
}

qint64 FileWriter::writeData(const char* bytes, qint64 count) {
  for (qint64 done = 0; done < count; done += kWriteStep) {
    buffer_.append(bytes + done, int(qMin<qint64>(kWriteStep, count - done)));
    if (buffer_.size() >= kWriteStep && !flushBuffer()) return -1;
  }
  return failure_ ? -1 : count;
}

bool FileWriter::finish() {
  if (flushBuffer() && !storeAndClose(file_)) failure_ = errno;
  file_.reset();
  errno = failure_;
  return !failure_;
}

bool storeAndClose(Descriptor& file) {
  if (fsync(file.fd()) == 0 || errno == EINVAL || errno == ENOTSUP) return file.close();
  const int code = errno;
  file.reset();
  errno = code;
  return false;
}

bool hasCurrentFolder() {
  char name[PATH_MAX];
  return getcwd(name, sizeof name) != nullptr;
}

QString systemReason(int code) {
  return textFromBytes(strerror(code));
}

bool writeAll(int fd, const char* bytes, qint64 count) {
  while (count > 0) {
    const ssize_t written = write(fd, bytes, size_t(count));
    if (written < 0 && errno == EINTR) continue;
    if (written == 0) errno = ENOSPC;
    if (written <= 0) return false;
    bytes += written;
    count -= written;
  }
  return true;
}

bool hasRoom(int fd) {
  struct stat before;
  static const char block[4096] = {};
  if (fstat(fd, &before) != 0) return false;
  for (qint64 at = before.st_size, end = at + qint64(sizeof block); at < end;) {
    const ssize_t count = pwrite(fd, block, size_t(end - at), at);
    if (count < 0 && errno == EINTR) continue;
    if (count == 0) errno = ENOSPC;
    if (count <= 0) {
      const int code = errno;
      if (ftruncate(fd, before.st_size) == 0) errno = code;
      return false;
    }
    at += count;
  }
  return ftruncate(fd, before.st_size) == 0;
}

Descriptor openRegular(const QString& file, qint64 mostBytes, QString& reason) {
  struct stat info;
  Descriptor source = openToRead(file, info, reason);
  char byte;
  ssize_t count = 0;
  bool good = source.isOpen();
  if (good && info.st_size > mostBytes) good = refuse(reason, tooLarge(mostBytes));
  if (good && info.st_size == 0) {
    do count = pread(source.fd(), &byte, 1, 0);
    while (count < 0 && errno == EINTR);
    if (count < 0) good = refuseBySystem(reason);
    if (count > 0) good = refuse(reason, "it is not a regular file");
  }
  return good ? std::move(source) : Descriptor();
}

bool readFile(const QString& file, qint64 mostBytes, QByteArray& bytes, QString& reason) {
  bytes.clear();
  struct stat info;
  const Descriptor source = openToRead(file, info, reason);
  return source.isOpen() && readOpenFile(source.fd(), mostBytes, bytes, reason);
}

bool readOpenFile(int fd, qint64 mostBytes, QByteArray& bytes, QString& reason) {
  bytes.clear();
  struct stat info;
  if (fstat(fd, &info) != 0) return refuseBySystem(reason);
  if (!S_ISREG(info.st_mode)) return refuse(reason, kindOf(info));
  if (info.st_size > mostBytes) return refuse(reason, tooLarge(mostBytes));
  qint64 size = 0;
  bytes.resize(int(info.st_size ? info.st_size + 1 : qMin(mostBytes + 1, kReadStep)));
  for (;;) {
    const ssize_t count = read(fd, bytes.data() + size, size_t(bytes.size() - size));
    if (count < 0 && errno == EINTR) continue;
    if (count > 0) size += count;
    const bool failed = count < 0 && !refuseBySystem(reason);
    if (failed || (size > mostBytes && !refuse(reason, tooLarge(mostBytes)))) {
      bytes.clear();
      return false;
    }
    if (count == 0) break;
    if (size == bytes.size()) bytes.resize(int(qMin(mostBytes + 1, size + qMax(size, kReadStep))));
  }
  bytes.resize(int(size));
  return true;
}

bool replaceFile(const Replacement& request, const QByteArray& bytes, QString& reason) {
  Place place;
  if (!findPlace(request, place, reason)) return false;
  if (place.isSpecial) return writeInto(place.name, bytes, reason);
  TemporaryFile fresh;
  if (!makeFresh(request, place, fresh, reason)) return false;
  if (!writeAll(fresh.fd(), bytes.constData(), bytes.size()) || !fresh.keepAs(place.name))
    return refuseBySystem(reason);
  return true;
}

bool checkReplaceable(const Replacement& request, QString& reason) {
  Place place;
  TemporaryFile fresh;
  if (!findPlace(request, place, reason)) return false;
  if (!place.isSpecial) return makeFresh(request, place, fresh, reason);
  return faccessat(AT_FDCWD, place.name.constData(), W_OK, AT_EACCESS) == 0 || refuseBySystem(reason);
}

}  // namespace ost

// Scratch files. Without a name from the start, so that nothing is left of them whenever the process ends.
#include "platform/system/scratch_file.h"

#include <errno.h>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>

#include "platform/istdata/wire_text.h"
#include "platform/system/files.h"

namespace ost {
namespace {

bool refuse(QString& reason, const char* what) {
  const int code = errno;
  reason = QString::fromLatin1("Cannot %1 a temporary file in \"%2\": %3")
               .arg(QString::fromLatin1(what), wireFromFile(QDir::tempPath()), systemReason(code));
  return false;
}

}  // namespace

bool ScratchFile::open(QString& reason) {
  const QByteArray folder = QFile::encodeName(QDir::tempPath());
  file_.reset(::open(folder.constData(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600));
  if (file_.isOpen()) return true;
  // Not every file system can do that.
  QByteArray path = folder + "/ost-XXXXXX";
  file_.reset(mkostemp(path.data(), O_CLOEXEC));
  return file_.isOpen() && unlink(path.constData()) == 0 ? true : refuse(reason, "make");
}

bool ScratchFile::write(const QByteArray& bytes, QString& reason) {
  return writeAll(fd(), bytes.constData(), bytes.size()) && lseek(fd(), 0, SEEK_SET) == 0 ? true
                                                                                          : refuse(reason, "write");
}

bool ScratchFile::hasRoom(QString& reason) const {
  struct stat before;
  static const char block[4096] = {};
  if (fstat(fd(), &before) != 0) return refuse(reason, "read");
  for (qint64 at = before.st_size, end = at + qint64(sizeof block); at < end;) {
    const ssize_t count = pwrite(fd(), block, size_t(end - at), at);
    if (count < 0 && errno == EINTR) continue;
    if (count == 0) errno = ENOSPC;
    if (count <= 0) return refuse(reason, "write");
    at += count;
  }
  return ftruncate(fd(), before.st_size) == 0 ? true : refuse(reason, "write");
}

}  // namespace ost

// Scratch files. Without a name from the start, so that nothing is left of them whenever the process ends.
#include "platform/system/scratch_file.h"

#include <errno.h>
#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <QDir>
#include <QFile>

#include "platform/system/files.h"
#include "platform/text/byte_text.h"

namespace ost {
namespace {

bool refuse(QString& reason, const char* what) {
  const int code = errno;
  reason = QStringLiteral("Cannot %1 a temporary file in \"%2\": %3")
               .arg(QString::fromLatin1(what), textFromFile(QDir::tempPath()), systemReason(code));
  return false;
}

constexpr qint64 kMaxContentBytes = qint64(1) << 30;

}  // namespace

bool ScratchFile::open(QString& reason) {
  const QByteArray folder = QFile::encodeName(QDir::tempPath());
  file_.reset(::open(folder.constData(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600));
  if (file_.isOpen()) return true;
  // Not supported by every file system.
  QByteArray path = folder + "/ost-XXXXXX";
  file_.reset(mkostemp(path.data(), O_CLOEXEC));
  return file_.isOpen() && unlink(path.constData()) == 0 ? true : refuse(reason, "make");
}

bool ScratchFile::write(const QByteArray& bytes, QString& reason) {
  return writeAll(fd(), bytes.constData(), bytes.size()) && lseek(fd(), 0, SEEK_SET) == 0 ? true
                                                                                          : refuse(reason, "write");
}

bool ScratchFile::hasRoom(QString& reason) const {
  return ost::hasRoom(fd()) ? true : refuse(reason, "write");
}

QByteArray ScratchFile::content() const {
  QFile file;
  if (lseek(fd(), 0, SEEK_SET) != 0 || !file.open(fd(), QIODevice::ReadOnly, QFileDevice::DontCloseHandle) ||
      file.size() > kMaxContentBytes)
    return QByteArray();
  return file.readAll();
}

}  // namespace ost

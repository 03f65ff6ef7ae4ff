// Stamps of source files.
#include "platform/design/source_stamp.h"

#include <sys/stat.h>

#include <QCryptographicHash>
#include <QFile>

namespace ost {
namespace {

bool statFile(const QString& file, qint64& size, qint64& modified) {
  struct stat info;
  if (stat(QFile::encodeName(file).constData(), &info) != 0 || !S_ISREG(info.st_mode)) return false;
  size = info.st_size;
  modified = qint64(info.st_mtim.tv_sec) * 1000000000 + info.st_mtim.tv_nsec;
  return true;
}

QByteArray hashFile(const QString& name) {
  QFile file(name);
  QCryptographicHash hash(QCryptographicHash::Sha256);
  return file.open(QIODevice::ReadOnly) && hash.addData(&file) ? hash.result() : QByteArray();
}

}  // namespace

SourceStamp SourceStamp::take(const QString& file) {
  SourceStamp stamp;
  stamp.file = file;
  if (statFile(file, stamp.size, stamp.modified)) stamp.hash = hashFile(file);
  return stamp;
}

bool SourceStamp::holds() {
  qint64 sizeNow = -1, modifiedNow = 0;
  if (!statFile(file, sizeNow, modifiedNow)) return size < 0;
  if (sizeNow == size && modifiedNow == modified) return true;
  if (sizeNow != size || hashFile(file) != hash) return false;
  modified = modifiedNow;
  return true;
}

}  // namespace ost

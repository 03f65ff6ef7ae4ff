// Stamps of source files.
#include "platform/design/source_stamp.h"

#include <sys/stat.h>
#include <time.h>

#include <QCryptographicHash>
#include <QFile>

#include "platform/system/files.h"

namespace ost {
namespace {

// Two changes may bear one time when they are no further apart: file systems count in steps of up to two seconds.
constexpr qint64 kTimeStep = qint64(2) * 1000000000;

qint64 nanoseconds(const timespec& time) {
  return qint64(time.tv_sec) * 1000000000 + time.tv_nsec;
}

bool look(const QString& file, SourceStamp& stamp) {
  struct stat info;
  if (stat(QFile::encodeName(file).constData(), &info) != 0 || !S_ISREG(info.st_mode)) return false;
  stamp.size = info.st_size;
  stamp.modified = nanoseconds(info.st_mtim);
  stamp.changed = nanoseconds(info.st_ctim);
  stamp.device = info.st_dev;
  stamp.inode = info.st_ino;
  return true;
}

bool looksAlike(const SourceStamp& a, const SourceStamp& b) {
  return a.size == b.size && a.modified == b.modified && a.changed == b.changed && a.device == b.device &&
         a.inode == b.inode;
}

QByteArray hashFile(const QString& name) {
  QString reason;
  const Descriptor source = openRegular(name, std::numeric_limits<qint64>::max(), reason);
  QFile file;
  QCryptographicHash hash(QCryptographicHash::Sha256);
  const bool open = source.isOpen() && file.open(source.fd(), QIODevice::ReadOnly);
  return open && hash.addData(&file) ? hash.result() : QByteArray();
}

}  // namespace

qint64 SourceStamp::now() {
  timespec time = {};
  clock_gettime(CLOCK_REALTIME, &time);
  return nanoseconds(time);
}

SourceStamp SourceStamp::take(const QString& file, qint64 readSince) {
  SourceStamp stamp;
  stamp.file = file;
  stamp.taken = now();
  if (look(file, stamp)) stamp.hash = hashFile(file);
  if (stamp.changed > readSince) stamp.hash.clear();
  return stamp;
}

bool SourceStamp::holds() {
  SourceStamp fresh;
  fresh.taken = now();
  if (!look(file, fresh)) return size < 0;
  if (hash.isNull()) return false;
  if (looksAlike(*this, fresh) && taken - qMax(modified, changed) > kTimeStep) return true;
  if (fresh.size != size || hashFile(file) != hash) return false;
  fresh.file = file;
  fresh.hash = hash;
  *this = fresh;
  return true;
}

}  // namespace ost

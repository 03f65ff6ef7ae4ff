// Stored entries and the central directory, after the public description of the format (APPNOTE 6.3, 4.3).
#include "platform/reader/zip_archive.h"

#include <zlib.h>

namespace ost {
namespace {

void add(QByteArray& bytes, quint32 value, int count) {
  for (int i = 0; i < count; ++i) bytes += static_cast<char>(value >> 8 * i);
}

/// What an entry's two headers have in common.
QByteArray fieldsOf(const QByteArray& name, const QByteArray& contents) {
  QByteArray fields;
  add(fields, 20, 2);      // version needed
  add(fields, 0, 4);       // flags; stored
  add(fields, 0, 2);       // time
  add(fields, 0x0021, 2);  // date: 1980-01-01, the same file for the same capture
  add(fields, quint32(crc32(0, reinterpret_cast<const Bytef*>(contents.constData()), uInt(contents.size()))), 4);
  add(fields, quint32(contents.size()), 4);
  add(fields, quint32(contents.size()), 4);
  add(fields, quint32(name.size()), 2);
  add(fields, 0, 2);  // extra field
  return fields;
}

}  // namespace

QByteArray zipArchive(const QList<QPair<QByteArray, QByteArray>>& files) {
  QByteArray archive, directory;
  for (const auto& [name, contents] : files) {
    const QByteArray fields = fieldsOf(name, contents);
    add(directory, 0x02014b50, 4);
    add(directory, 20, 2);  // version made by
    directory += fields;
    add(directory, 0, 4);  // comment, disk
    add(directory, 0, 2);  // internal attributes
    add(directory, 0, 4);  // external attributes
    add(directory, quint32(archive.size()), 4);
    directory += name;
    add(archive, 0x04034b50, 4);
    archive += fields + name + contents;
  }
  const int start = archive.size();
  archive += directory;
  add(archive, 0x06054b50, 4);
  add(archive, 0, 4);  // disks
  add(archive, quint32(files.size()), 2);
  add(archive, quint32(files.size()), 2);
  add(archive, quint32(directory.size()), 4);
  add(archive, quint32(start), 4);
  add(archive, 0, 2);  // comment
  return archive;
}

}  // namespace ost

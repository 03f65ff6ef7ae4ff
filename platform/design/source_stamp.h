// Whether files are still what they were: what the system says of them first, content where that differs or is too
// young to be told apart.
#pragma once

#include <QByteArray>
#include <QString>
#include <limits>

namespace ost {

struct SourceStamp {
  QString file;         ///< Absolute.
  qint64 size = -1;     ///< -1 when it could not be read.
  qint64 modified = 0;  ///< Nanoseconds, as those below.
  qint64 changed = 0;   ///< The time that no program can set back: of the last change to content or attributes.
  quint64 device = 0, inode = 0;
  qint64 taken = 0;  ///< When it was found to have this content.
  QByteArray hash;   ///< SHA-256 of the content; null when that is not what was read.

  /// `readSince`: when somebody began to read the file, where that is not to come; what changed after that never holds.
  static SourceStamp take(const QString& file, qint64 readSince = std::numeric_limits<qint64>::max());
  /// True while the file's content is the same. Remembers new times with the same content.
  bool holds();
  static qint64 now();
};

}  // namespace ost

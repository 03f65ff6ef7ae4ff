// Whether files are still what they were: size and time first, content where these differ.
#pragma once

#include <QByteArray>
#include <QString>

namespace ost {

struct SourceStamp {
  QString file;         ///< Absolute.
  qint64 size = -1;     ///< -1 when it could not be read.
  qint64 modified = 0;  ///< Nanoseconds.
  QByteArray hash;      ///< SHA-256 of the content.

  static SourceStamp take(const QString& file);
  /// True while the file's content is the same. Remembers a new time with the same content.
  bool holds();
};

}  // namespace ost

// What the design tests share: a folder of source files and short ways to read them.
#pragma once

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>
#include <ostream>

#include "platform/design/design.h"
#include "platform/istdata/wire_text.h"

inline QString wire(const char* text) {
  return QString::fromLatin1(text);
}
inline std::string plain(const QString& text) {
  return text.toLatin1().toStdString();
}

struct Scratch {
  QTemporaryDir folder;

  /// Writes a file and returns its absolute name as wire text.
  QString write(const QByteArray& name, const QByteArray& content) {
    const QByteArray path = QFile::encodeName(folder.path()) + '/' + name;
    QFile file(QFile::decodeName(path));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly)) << path.constData();
    file.write(content);
    return ost::wireFromBytes(path);
  }
};

/// Reads and returns the design; on failure null and the text in `error`.
inline std::shared_ptr<const ost::Design> readDesign(const ost::DesignSource& source, QString& error) {
  error.clear();
  return ost::Design::read(source, error);
}

inline ost::DesignSource sourceOf(const QStringList& files) {
  ost::DesignSource source;
  source.files = files;
  return source;
}

// What the tests with files share: a folder that goes again, and texts as they can be compared and printed.
#pragma once

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include "platform/text/byte_text.h"

namespace ost {

inline std::string plain(const QString& text) {
  return text.toLatin1().toStdString();
}

/// Whether the text has that part; the text is shown when not.
inline testing::AssertionResult has(const QString& text, const char* part) {
  if (text.contains(QLatin1String(part))) return testing::AssertionSuccess();
  return testing::AssertionFailure() << "no \"" << part << "\" in: " << plain(text);
}

/// The text with the first `from` replaced by `to`; a `from` that is not there fails the test.
inline QByteArray damaged(QByteArray text, const char* from, const char* to) {
  const int at = text.indexOf(from);
  EXPECT_GE(at, 0) << "nothing to damage: " << from;
  return at < 0 ? text : text.replace(at, int(qstrlen(from)), to);
}

struct Scratch {
  QTemporaryDir folder;

  /// The absolute name of an entry, as byte text.
  QString path(const QByteArray& name) const { return textFromBytes(QFile::encodeName(folder.path()) + '/' + name); }

  /// The names of all entries.
  QStringList entries() const {
    return QDir(folder.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
  }

  /// Writes a file and returns its absolute name as byte text.
  QString write(const QByteArray& name, const QByteArray& content) const {
    QFile file(fileFromText(path(name)));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size()) << name.constData();
    return path(name);
  }

  QByteArray read(const QByteArray& name) const {
    QFile file(fileFromText(path(name)));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name.constData();
    return file.readAll();
  }
};

}  // namespace ost

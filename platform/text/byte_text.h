// Text inside the embedded service is "byte text": a QString whose every character is one byte (1 to 255) of the UTF-8
// text that Tcl hands over. It is converted to Unicode or to a file name only at the boundary, by these functions.
#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>
#include <string_view>

namespace ost {

inline QString unicodeFromText(const QString& text) {
  return QString::fromUtf8(text.toLatin1());
}
/// Keeps null characters, which Tcl cannot produce, so that the checks of names find them.
inline QString textFromUnicode(const QString& unicode) {
  const QByteArray utf8 = unicode.toUtf8();
  return QString::fromLatin1(utf8.constData(), utf8.size());
}
inline QString textFromBytes(const QByteArray& bytes) {
  return QString::fromLatin1(bytes);
}
inline QString textFromView(std::string_view bytes) {
  return QString::fromLatin1(bytes.data(), static_cast<int>(bytes.size()));
}
/// The file that a name typed in Tcl means, and the reverse.
inline QString fileFromText(const QString& text) {
  return QFile::decodeName(text.toLatin1());
}
inline QString textFromFile(const QString& file) {
  return QString::fromLatin1(QFile::encodeName(file));
}
/// For texts that quote what was read: control characters become '?'.
inline QString oneLine(QString text) {
  for (QChar& c : text)
    if (c.unicode() < 32 || c.unicode() == 127) c = QLatin1Char('?');
  return text;
}

}  // namespace ost

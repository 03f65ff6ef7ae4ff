// Conversion between the interpreter's 8-bit text and the service's strings. Latin-1 in both directions carries every
// byte from 1 to 255 unchanged, and exists in Qt 4 as in Qt 5; the difference between the two stays in this file.
#pragma once

#include <tcl.h>

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <string>

namespace ost_command {

inline QString toService(const std::string& bytes) {
  return QString::fromLatin1(bytes.data(), static_cast<int>(bytes.size()));
}

inline std::string fromService(const QString& text) {
  const QByteArray bytes = text.toLatin1();
  return std::string(bytes.constData(), static_cast<std::size_t>(bytes.size()));
}

/// `bytes` without surrounding ASCII white space. Trimming the bytes and not the QString matters: QString::trimmed()
/// also removes 0x85 and 0xA0, which end many a UTF-8 character ("à" is C3 A0).
inline QString toServiceTrimmed(const std::string& bytes) {
  const char* const blanks = "\t\n\v\f\r ";
  const std::string::size_type first = bytes.find_first_not_of(blanks);
  if (first == std::string::npos) return QString();
  return QString::fromLatin1(bytes.data() + first, static_cast<int>(bytes.find_last_not_of(blanks) + 1 - first));
}

/// Appends the elements of the Tcl list `list` to `names`. False, with `names` unchanged, when it is not a list.
inline bool splitList(const std::string& list, QStringList& names) {
  int count = 0;
  const char** elements = nullptr;
  if (Tcl_SplitList(nullptr, list.c_str(), &count, &elements) != TCL_OK) return false;
  for (int i = 0; i < count; ++i) names.append(QString::fromLatin1(elements[i]));
  Tcl_Free(reinterpret_cast<char*>(elements));
  return true;
}

}  // namespace ost_command

// Where a capture goes. Whether it can be written is known before the core is armed: a capture that has no place to go
// must not be taken.
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

namespace ost {

/// A file, or the standard output ("-").
struct OutputFile {
  QString name;  ///< Byte text; empty: not asked for.

  bool isAsked() const { return !name.isEmpty(); }
  bool isStandardOutput() const { return name == QLatin1String("-"); }
  /// "wave_3.vcd" of "wave.vcd" with the mark "3", in which "_" replaces what is no letter, digit or "-"; the standard
  /// output stays what it is.
  OutputFile marked(const QString& mark) const;
  /// False with `error` when it could not be written now.
  bool check(QString& error) const;
};

struct OutputText {
  OutputFile file;
  QByteArray text;
};

/// Stores all texts whose files can be written. False with a text that names each file that could not, and those that
/// were written nevertheless.
bool storeAll(const QList<OutputText>& outputs, QString& error);

/// False with errno.
bool writeToStandardOutput(const QByteArray& text, QString& error);

}  // namespace ost

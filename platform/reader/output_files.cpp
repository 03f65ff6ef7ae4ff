// Each file is replaced as a whole, or not at all.
#include "platform/reader/output_files.h"

#include <unistd.h>

#include <cerrno>

#include "platform/system/files.h"
#include "platform/text/byte_text.h"

namespace ost {
namespace {

QString problemText(const OutputFile& file, const QString& reason) {
  return QStringLiteral("Cannot write \"%1\": %2.").arg(file.name, reason);
}

Replacement placeOf(const OutputFile& file) {
  return {fileFromText(file.name), QString(), true};
}

}  // namespace

OutputFile OutputFile::marked(const QString& mark) const {
  if (!isAsked() || isStandardOutput()) return *this;
  QString plain = mark;
  for (QChar& c : plain)
    if (c.unicode() > 127 || !(c.isLetterOrNumber() || c == QLatin1Char('-'))) c = QLatin1Char('_');
  const int dot = name.lastIndexOf(QLatin1Char('.')), slash = name.lastIndexOf(QLatin1Char('/'));
  const int end = dot > slash + 1 ? dot : name.size();
  return {name.left(end) + QLatin1Char('_') + plain + name.mid(end)};
}

bool OutputFile::check(QString& error) const {
  QString reason;
  if (!isAsked() || isStandardOutput() || checkReplaceable(placeOf(*this), reason)) return true;
  error = problemText(*this, reason);
  return false;
}

bool writeToStandardOutput(const QByteArray& text, QString& error) {
  if (writeAll(STDOUT_FILENO, text.constData(), text.size())) return true;
  error = QStringLiteral("Cannot write to the standard output: %1.").arg(systemReason(errno));
  return false;
}

bool storeAll(const QList<OutputText>& outputs, QString& error) {
  QStringList problems, written;
  for (const OutputText& output : outputs) {
    QString reason;
    if (output.file.isStandardOutput()) {
      if (!writeToStandardOutput(output.text, reason)) problems += reason;
    } else if (replaceFile(placeOf(output.file), output.text, reason)) {
      written += QStringLiteral("The file \"%1\" was written.").arg(output.file.name);
    } else {
      problems += problemText(output.file, reason);
    }
  }
  if (!problems.isEmpty()) error = (problems + written).join(QLatin1Char(' '));
  return problems.isEmpty();
}

}  // namespace ost

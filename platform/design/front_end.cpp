// Front ends as child processes, and what their ends mean in words for the user.
#include "platform/design/front_end.h"

#include <errno.h>
#include <string.h>

#include <QFile>
#include <QRegularExpression>
#include <QStandardPaths>

#include "platform/system/child_process.h"
#include "platform/system/files.h"
#include "platform/text/byte_text.h"

namespace ost {
namespace {

/// The first line with a place in a file and no warning, else the first that the program says of itself, else none.
QString firstError(const QString& program, const ChildEnd& end) {
  static const QRegularExpression place(QStringLiteral("\\A.+:\\d+(:\\d+)?: (?!warning|note)"),
                                        QRegularExpression::CaseInsensitiveOption);
  const QRegularExpression own(QStringLiteral("\\A\\S*%1[^:/ ]*: ?(?!warning|note)(.+)").arg(program));
  QString general;
  for (const QByteArray& bytes : (end.firstError + end.lastError).split('\n')) {
    const QString line = textFromBytes(bytes.trimmed().left(2000));
    if (place.match(line).hasMatch()) return line;
    if (general.isEmpty()) general = own.match(line).captured(1);
  }
  return general;
}

QString endText(const QString& name, const char* wayOut, const ChildEnd& end, const ToolLimits& limits) {
  switch (end.how) {
    case ChildEnd::NotStarted:
      if (end.code == ENOENT)
        return QStringLiteral("The program \"%1\" was not found; %2.").arg(name, textFromBytes(wayOut));
      return QStringLiteral("The program \"%1\" could not be started: %2; %3.")
          .arg(name, systemReason(end.code), textFromBytes(wayOut));
    case ChildEnd::NotPrepared:
    case ChildEnd::NoFolder:
      return QStringLiteral("The program \"%1\" could not be started: %2.").arg(name, systemReason(end.code));
    case ChildEnd::OutOfTime:
      return QStringLiteral("The program \"%1\" was stopped at the time limit of %2 s; allow it more with -timeout.")
          .arg(name)
          .arg(limits.timeLimitSeconds);
    case ChildEnd::Cancelled:
      return QStringLiteral("Cancelled while \"%1\" was running.").arg(name);
    case ChildEnd::TooMuchOutput:
      return QStringLiteral("The program \"%1\" prints without end and was stopped.").arg(name);
    case ChildEnd::Lost:
      return QStringLiteral("How \"%1\" ended is not known: the process that watches it was killed.").arg(name);
    case ChildEnd::Killed:
      return QStringLiteral("The program \"%1\" ended by signal %2 (%3); its memory limit was %4 MB (-memory).")
          .arg(name)
          .arg(end.code)
          .arg(textFromBytes(strsignal(end.code)))
          .arg(limits.memoryLimitBytes >> 20);
    case ChildEnd::Exited:
      break;
  }
  const QString reason = firstError(name, end);
  return reason.isEmpty() ? QStringLiteral("The program \"%1\" failed with exit status %2.").arg(name).arg(end.code)
                          : reason;
}

}  // namespace

bool runFrontEnd(const char* program, const char* wayOut, const QList<QByteArray>& arguments, const ToolLimits& limits,
                 QByteArray& output, QString& error) {
  ChildJob job;
  job.program = program;
  job.arguments = arguments;
  job.workingDirectory = QFile::encodeName(limits.workingDirectory);
  job.timeLimitSeconds = limits.timeLimitSeconds;
  job.memoryLimitBytes = limits.memoryLimitBytes;
  job.outputLimitBytes = 512 << 20;
  job.idle = limits.idle;
  const ChildEnd end = runChild(job);
  output = end.output;
  if (end.how == ChildEnd::Exited && end.code == 0) return true;
  error = oneLine(endText(textFromBytes(program), wayOut, end, limits));
  return false;
}

bool isOnPath(const char* program) {
  return !QStandardPaths::findExecutable(textFromBytes(program)).isEmpty();
}

}  // namespace ost

// Yosys as a child process: how scripts and words are passed, and what its end means in words for the user.
#include "platform/design/yosys.h"

#include <errno.h>
#include <string.h>

#include <QFile>
#include <QRegularExpression>

#include "platform/design/name_index.h"
#include "platform/system/child_process.h"
#include "platform/system/files.h"
#include "platform/system/scratch_file.h"
#include "platform/text/byte_text.h"

namespace ost {
namespace {

const char kDone[] = "OST_SCRIPT_DONE\n";

QByteArray yosysProgram() {
  const QByteArray chosen = qgetenv("OST_YOSYS");
  return chosen.isEmpty() ? QByteArray("yosys") : chosen;
}

QString startError(int code) {
  const QString program = textFromBytes(yosysProgram());
  if (code == ENOENT) {
    return QStringLiteral(
               "Yosys was not found (program \"%1\"): install the Debian package \"yosys\", or name the program in the "
               "environment variable OST_YOSYS")
        .arg(program);
  }
  return QStringLiteral(
             "Yosys could not be started (program \"%1\"): %2; check the Debian package \"yosys\" or the environment "
             "variable OST_YOSYS")
      .arg(program, systemReason(code));
}

/// Nothing wrong with the program: there was no room to start any.
QString preparationError(int code) {
  const bool files = code == EMFILE || code == ENFILE;
  return QStringLiteral("Yosys could not be started: %1%2")
      .arg(systemReason(code), textFromBytes(files ? "; close some, or allow more with \"ulimit -n\"" : ""));
}

// Yosys' first error line without its "ERROR:" mark, or empty. Its form is "file:line: ERROR: text" or "ERROR: text".
QByteArray firstErrorLine(const ChildEnd& end) {
  for (const QByteArray* text : {&end.firstError, &end.lastError}) {
    for (const QByteArray& line : text->split('\n')) {
      const int mark = line.indexOf("ERROR: ");
      if (mark < 0) continue;
      return (line.left(mark) + line.mid(mark + 7)).trimmed().left(2000);
    }
  }
  return QByteArray();
}

/// The module that the log names last, in words to be added to an error; empty without one.
QString lastModule(const YosysJob& job) {
  QFile log;
  constexpr qint64 kTail = 256 << 10;
  if (job.logFile < 0 || !log.open(job.files.at(job.logFile), QIODevice::ReadOnly, QFileDevice::DontCloseHandle))
    return QString();
  log.seek(qMax<qint64>(0, log.size() - kTail));
  static const QRegularExpression named(QStringLiteral("module `([^']+)'"));
  QString last;
  for (auto match = named.globalMatch(textFromBytes(log.readAll())); match.hasNext();) last = match.next().captured(1);
  const QString name = textFromBytes(sourceName(last.toLatin1().replace("$abstract", "")));
  return last.isEmpty() ? last : QStringLiteral("; it was at the module \"%1\" (-blackbox %1)").arg(name);
}

QString endError(const ChildEnd& end, const YosysJob& job) {
  const bool noMemory = end.firstError.contains("bad_alloc") || end.lastError.contains("bad_alloc");
  if (noMemory) {
    return QStringLiteral(
               "Yosys needed more than its memory limit of %1 MB: allow it more, or treat the module that grows as a "
               "black box%2")
        .arg(job.memoryLimitBytes >> 20)
        .arg(lastModule(job));
  }
  switch (end.how) {
    case ChildEnd::NotPrepared:
      return preparationError(end.code);
    case ChildEnd::NoFolder:
      return QStringLiteral("Yosys could not be started in the folder \"%1\": %2")
          .arg(textFromFile(job.workingDirectory), systemReason(end.code));
    case ChildEnd::NotStarted:
      return startError(end.code);
    case ChildEnd::TooMuchOutput:
      return QStringLiteral("The program \"%1\" prints without end and was stopped: it is not Yosys; check OST_YOSYS")
          .arg(textFromBytes(yosysProgram()));
    case ChildEnd::Lost:
      return QStringLiteral("How Yosys ended is not known: the process that watches it was killed");
    case ChildEnd::OutOfTime:
      return QStringLiteral(
                 "Yosys was stopped at its time limit of %1 s: allow it more, or treat the module that takes so long "
                 "as a black box%2")
          .arg(job.timeLimitSeconds)
          .arg(lastModule(job));
    case ChildEnd::Cancelled:
      return QStringLiteral("Cancelled while Yosys was running");
    case ChildEnd::Killed:
      return QStringLiteral("Yosys ended by signal %1 (%2) before it was done; its memory limit was %3 MB%4")
          .arg(end.code)
          .arg(textFromBytes(strsignal(end.code)))
          .arg(job.memoryLimitBytes >> 20)
          .arg(lastModule(job));
    case ChildEnd::Exited:
      break;
  }
  const QByteArray line = firstErrorLine(end);
  if (!line.isEmpty()) return textFromBytes(line);
  if (end.code == 0) return QStringLiteral("Yosys ended before its script did; check OST_YOSYS");
  const QByteArray last = end.firstError.trimmed().split('\n').last().left(500);
  return QStringLiteral("Yosys failed with exit status %1%2")
      .arg(end.code)
      .arg(last.isEmpty() ? QString() : QStringLiteral(": ") + textFromBytes(last));
}

}  // namespace

YosysResult runYosys(const YosysJob& job) {
  YosysResult result;
  result.error = job.script.problem();
  ScratchFile script;
  if (!result.error.isEmpty() || !script.open(result.error) ||
      !script.write(job.script.bytes() + "log -stdout " + kDone, result.error))
    return result;

  ChildJob child;
  child.program = yosysProgram();
  child.arguments << "-q";
  if (job.dependencyFile >= 0)
    child.arguments << "-E"
                    << "/proc/self/fd/" + QByteArray::number(3 + job.dependencyFile);
  if (job.logFile >= 0)
    child.arguments << "-l"
                    << "/proc/self/fd/" + QByteArray::number(3 + job.logFile);
  child.arguments << "-s"
                  << "/dev/stdin";
  child.workingDirectory = QFile::encodeName(job.workingDirectory);
  child.inputFile = script.fd();
  child.files = job.files;
  child.timeLimitSeconds = job.timeLimitSeconds;
  child.memoryLimitBytes = job.memoryLimitBytes;
  child.idle = job.idle;
  const ChildEnd end = runChild(child);

  result.output = end.output;
  result.cancelled = end.how == ChildEnd::Cancelled;
  // A script that cannot be read to its end counts as done for Yosys.
  result.ok = end.how == ChildEnd::Exited && end.code == 0 && result.output.endsWith(kDone);
  if (result.ok)
    result.output.chop(int(sizeof kDone) - 1);
  else
    result.error = oneLine(endError(end, job));
  return result;
}

QString yosysVersion(QString& error) {
  ChildJob job;
  job.program = yosysProgram();
  job.arguments << "-V";
  job.timeLimitSeconds = 20;
  job.outputLimitBytes = 4096;
  const ChildEnd end = runChild(job);
  if (end.how != ChildEnd::Exited || end.code != 0) {
    error = end.how == ChildEnd::NotStarted ? startError(end.code)
            : end.how == ChildEnd::NotPrepared
                ? preparationError(end.code)
                : QStringLiteral("The program \"%1\" does not answer as Yosys does: check OST_YOSYS")
                      .arg(textFromBytes(job.program));
    return QString();
  }
  // "Yosys 0.23 (git sha1 ...)"
  const QList<QByteArray> words = end.output.split('\n').first().trimmed().split(' ');
  return textFromBytes(words.size() > 1 ? words.at(0) + ' ' + words.at(1) : words.at(0));
}

}  // namespace ost

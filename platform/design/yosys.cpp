// Yosys as a child process: how scripts and words are passed, and what its end means in words for the user.
#include "platform/design/yosys.h"

#include <errno.h>
#include <fcntl.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <QDir>
#include <QFile>

#include "platform/system/child_process.h"
#include "platform/istdata/wire_text.h"

namespace ost {
namespace {

QByteArray yosysProgram() {
  const QByteArray chosen = qgetenv("OST_YOSYS");
  return chosen.isEmpty() ? QByteArray("yosys") : chosen;
}

QString startError(int code) {
  const QString program = wireFromBytes(yosysProgram());
  if (code == ENOENT) {
    return QString::fromLatin1(
               "Yosys was not found (program \"%1\"): install the Debian package \"yosys\", or name the program in the "
               "environment variable OST_YOSYS")
        .arg(program);
  }
  return QString::fromLatin1(
             "Yosys could not be started (program \"%1\"): %2; check the Debian package \"yosys\" or the environment "
             "variable OST_YOSYS")
      .arg(program, QString::fromLatin1(strerror(code)));
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

QString endError(const ChildEnd& end, const YosysJob& job) {
  const bool noMemory = end.firstError.contains("bad_alloc") || end.lastError.contains("bad_alloc");
  if (noMemory) {
    return QString::fromLatin1(
               "Yosys needed more than its memory limit of %1 MB: allow it more, or treat the module that grows as a "
               "black box")
        .arg(job.memoryLimitBytes >> 20);
  }
  switch (end.how) {
    case ChildEnd::NotStarted:
      return startError(end.code);
    case ChildEnd::OutOfTime:
      return QString::fromLatin1(
                 "Yosys was stopped at its time limit of %1 s: allow it more, or treat the module that takes so long "
                 "as "
                 "a black box")
          .arg(job.timeLimitSeconds);
    case ChildEnd::Cancelled:
      return QString::fromLatin1("Cancelled while Yosys was running");
    case ChildEnd::Killed:
      return QString::fromLatin1("Yosys ended by signal %1 (%2) before it was done; its memory limit was %3 MB")
          .arg(end.code)
          .arg(QString::fromLatin1(strsignal(end.code)))
          .arg(job.memoryLimitBytes >> 20);
    case ChildEnd::Exited:
      break;
  }
  const QByteArray line = firstErrorLine(end);
  if (!line.isEmpty()) return wireFromBytes(line);
  const QByteArray last = end.firstError.trimmed().split('\n').last().left(500);
  return QString::fromLatin1("Yosys failed with exit status %1%2")
      .arg(end.code)
      .arg(last.isEmpty() ? QString() : QString::fromLatin1(": ") + wireFromBytes(last));
}

// Closes a descriptor at the end of a block.
struct FileCloser {
  int fd;
  ~FileCloser() {
    if (fd >= 0) close(fd);
  }
};

}  // namespace

int openScratchFile(QString& error) {
  // Without a name from the start, so that nothing is left of it whenever the process ends. Not every file system can.
  const int nameless = open(QFile::encodeName(QDir::tempPath()).constData(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
  if (nameless >= 0) return nameless;
  QByteArray path = QFile::encodeName(QDir::tempPath()) + "/ost-XXXXXX";
  const int fd = mkostemp(path.data(), O_CLOEXEC);
  if (fd < 0) {
    error = QString::fromLatin1("Cannot make a temporary file in \"%1\": %2")
                .arg(wireFromFile(QDir::tempPath()), QString::fromLatin1(strerror(errno)));
    return -1;
  }
  unlink(path.constData());
  return fd;
}

YosysResult runYosys(const YosysJob& job) {
  YosysResult result;
  const FileCloser script{openScratchFile(result.error)};
  if (script.fd < 0) return result;
  QFile file;
  file.open(script.fd, QIODevice::WriteOnly, QFileDevice::DontCloseHandle);
  if (file.write(job.script) != job.script.size() || !file.flush() || lseek(script.fd, 0, SEEK_SET) != 0) {
    result.error = QString::fromLatin1("Cannot write a temporary file in \"%1\": %2")
                       .arg(wireFromFile(QDir::tempPath()), toWire(file.errorString()));
    return result;
  }

  ChildJob child;
  child.program = yosysProgram();
  child.arguments << "-q";
  if (job.dependencyFile >= 0)
    child.arguments << "-E"
                    << "/proc/self/fd/" + QByteArray::number(3 + job.dependencyFile);
  child.arguments << "-s"
                  << "/dev/stdin";
  child.workingDirectory = QFile::encodeName(job.workingDirectory);
  child.inputFile = script.fd;
  child.files = job.files;
  child.timeLimitSeconds = job.timeLimitSeconds;
  child.memoryLimitBytes = job.memoryLimitBytes;
  child.idle = job.idle;
  const ChildEnd end = runChild(child);

  result.output = end.output;
  result.cancelled = end.how == ChildEnd::Cancelled;
  result.ok = end.how == ChildEnd::Exited && end.code == 0;
  if (!result.ok) result.error = endError(end, job);
  return result;
}

QByteArray yosysWord(const QByteArray& word) {
  if (word.isEmpty()) return QByteArray();
  bool blank = false, quote = false;
  for (const char c : word) {
    const unsigned char byte = static_cast<unsigned char>(c);
    if (byte < ' ' || byte == 0x7f) return QByteArray();
    blank |= c == ' ';
    quote |= c == '"';
  }
  const char first = word.at(0), last = word.at(word.size() - 1);
  if (blank) return quote ? QByteArray() : '"' + word + '"';
  if (first == '-' || first == '#' || first == '"' || first == '<' || last == ';' || last == '\\') return QByteArray();
  return word;
}

QString yosysVersion(QString& error) {
  ChildJob job;
  job.program = yosysProgram();
  job.arguments << "-V";
  job.timeLimitSeconds = 20;
  const ChildEnd end = runChild(job);
  if (end.how != ChildEnd::Exited || end.code != 0) {
    error = end.how == ChildEnd::NotStarted
                ? startError(end.code)
                : QString::fromLatin1("The program \"%1\" does not answer as Yosys does: check OST_YOSYS")
                      .arg(wireFromBytes(job.program));
    return QString();
  }
  // "Yosys 0.23 (git sha1 ...)"
  const QList<QByteArray> words = end.output.split('\n').first().trimmed().split(' ');
  return wireFromBytes(words.size() > 1 ? words.at(0) + ' ' + words.at(1) : words.at(0));
}

}  // namespace ost

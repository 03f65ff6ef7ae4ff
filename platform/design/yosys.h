// Runs Yosys as a child process: arguments and scripts are passed so that no file name becomes a command, time and
// memory are limited, and the caller's idle hook is served meanwhile.
#pragma once

#include <QByteArray>
#include <QString>
#include <functional>

namespace ost {

struct YosysJob {
  QByteArray script;            ///< Yosys commands, a line each; names in it come from yosysWord().
  QString workingDirectory;     ///< Empty: the current one.
  int timeLimitSeconds = 600;
  qint64 memoryLimitBytes = qint64(8) << 30;
  std::function<bool()> idle;   ///< Called at least ten times a second; false cancels. May be empty.
};

struct YosysResult {
  bool ok = false;
  bool cancelled = false;
  QString error;     ///< One clear text: missing Yosys, its first error with file and line, time or memory limit.
  QByteArray output; ///< Standard output.
};

/// Runs one job to its end. The child never outlives this process.
YosysResult runYosys(const YosysJob& job);

/// `word` as one word of a Yosys script line, whatever characters it holds. Null when Yosys cannot take it.
QByteArray yosysWord(const QByteArray& word);

/// "Yosys 0.23", or empty with the reason in `error`. The program is $OST_YOSYS, else "yosys" on the PATH.
QString yosysVersion(QString& error);

}  // namespace ost

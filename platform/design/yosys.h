// Runs Yosys as a child process: arguments and scripts are passed so that no file name becomes a command, time and
// memory are limited, and the caller's idle hook is served meanwhile.
#pragma once

#include <QByteArray>
#include <QString>
#include <QVector>
#include <functional>

#include "framework/ist_com_data.h"

namespace ost {

struct YosysJob {
  QByteArray script;         ///< Yosys commands, a line each; names in it come from yosysWord().
  QString workingDirectory;  ///< Empty: the current one.
  int timeLimitSeconds = 600;
  qint64 memoryLimitBytes = qint64(8) << 30;
  std::function<bool()> idle;  ///< Called at least ten times a second; false cancels. May be empty.
  /// Open files of the caller that the job sees as /proc/self/fd/3, /proc/self/fd/4, ...
  QVector<int> files;
  /// A file (an index into `files`) that gets the names of all files Yosys read, or -1.
  int dependencyFile = -1;
};

struct YosysResult {
  bool ok = false;
  bool cancelled = false;
  QString error;      ///< One clear text: missing Yosys, its first error with file and line, time or memory limit.
  QByteArray output;  ///< Standard output.
};

/// Runs one job to its end. The child never outlives this process.
YosysResult runYosys(const YosysJob& job);

/// `word` as one word of a Yosys script line. Null when Yosys cannot take it: it has no escapes, so control characters,
/// a leading '-', '#', '"' or '<', a closing ';' or '\\' and a blank together with a quote are out. A word with blanks
/// comes quoted, which Yosys understands where it takes a file name only. Patterns stay patterns: files that are read
/// must not hold any of * ? [ {.
QByteArray yosysWord(const QByteArray& word);

/// An open file without a name, which vanishes with its descriptor; -1 with the reason in `error`. The caller closes
/// it.
int openScratchFile(QString& error);

/// "Yosys 0.23", or empty with the reason in `error`. The program is $OST_YOSYS, else "yosys" on the PATH.
ISTCOMDATA_API QString yosysVersion(QString& error);

}  // namespace ost

// Runs Yosys as a child process: time, memory and output are limited, and the caller's idle hook is served meanwhile.
#pragma once

#include <QByteArray>
#include <QString>
#include <QVector>
#include <functional>

#include "framework/ist_com_data.h"
#include "platform/design/yosys_script.h"

namespace ost {

struct YosysJob {
  YosysScript script;
  QString workingDirectory;  ///< Empty: the current one.
  int timeLimitSeconds = 600;
  qint64 memoryLimitBytes = qint64(8) << 30;
  std::function<bool()> idle;  ///< Called at least ten times a second; false cancels. May be empty.
  /// Open files of the caller that the job sees as /proc/self/fd/3, /proc/self/fd/4, ...
  QVector<int> files;
  /// A file (an index into `files`) that gets the names of all files Yosys read, or -1.
  int dependencyFile = -1;
  /// A file that gets Yosys' log, or -1: an error then names the module at which a limit struck.
  int logFile = -1;
};

struct YosysResult {
  bool ok = false;
  bool cancelled = false;
  QString error;      ///< One clear line: missing Yosys, its first error with file and line, a limit that was passed.
  QByteArray output;  ///< Standard output.
};

/// Runs one job to its end. The child never outlives this process.
YosysResult runYosys(const YosysJob& job);

/// "Yosys 0.23", or empty with the reason in `error`. The program is $OST_YOSYS, else "yosys" on the PATH.
ISTCOMDATA_API QString yosysVersion(QString& error);

}  // namespace ost

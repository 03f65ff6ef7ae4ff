// A child process without a shell: explicit argument words and descriptors, limits on time and memory, and a caller
// that stays alive meanwhile. Knows nothing of Yosys.
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QVector>
#include <functional>

namespace ost {

struct ChildJob {
  QByteArray program;           ///< Looked up on the PATH unless it holds a '/'.
  QList<QByteArray> arguments;  ///< Without the program itself.
  QByteArray workingDirectory;  ///< Empty: the current one.
  int inputFile = -1;           ///< Becomes standard input; -1 for none.
  QVector<int> files;           ///< Become the descriptors 3, 4, ...; every other one is closed.
  int timeLimitSeconds = 600;
  qint64 memoryLimitBytes = 0;  ///< Address space; 0 for no limit.
  std::function<bool()> idle;   ///< False ends the child.
};

struct ChildEnd {
  enum How { Exited, Killed, NotStarted, OutOfTime, Cancelled };
  How how = NotStarted;
  int code = 0;           ///< Exit code, signal number, or errno of a failed start.
  QByteArray output;      ///< Standard output.
  QByteArray firstError;  ///< The first 64 KB of standard error ...
  QByteArray lastError;   ///< ... and what came last after them.
};

/// Runs the job to its end. The child has a process group of its own, which is killed whole when a limit is passed or
/// `idle` cancels, and dies with the calling thread.
ChildEnd runChild(const ChildJob& job);

}  // namespace ost

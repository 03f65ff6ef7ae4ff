// A child process without a shell: explicit argument words and descriptors, limits on time, memory and output, and a
// caller that stays alive meanwhile. Knows nothing of Yosys.
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
  QVector<int> files;           ///< Become the descriptors 3, 4, ..., at most 16; every other one is closed.
  int timeLimitSeconds = 600;
  qint64 memoryLimitBytes = 0;     ///< Address space of the child and of each of its descendants; 0 for no limit.
  int outputLimitBytes = 1 << 20;  ///< Of standard output. Of standard error the head and the tail are kept.
  std::function<bool()> idle;      ///< False ends the child.
  /// Gets what comes on standard output and standard error, as it comes; nothing is kept or limited then.
  std::function<void(const char*, int)> takeText;
};

struct ChildEnd {
  enum How {
    Exited,       ///< With the exit code `code`. Nothing else may be taken for success.
    Killed,       ///< By the signal `code`.
    NotPrepared,  ///< The system refused what it takes to start anything: `code` is its errno.
    NoFolder,     ///< The working directory cannot be entered, by errno.
    NotStarted,   ///< The program cannot be executed, by errno.
    OutOfTime,
    TooMuchOutput,
    Cancelled,
    Lost,  ///< How it ended is unknown, as the process that watches it was killed.
  };
  How how = NotPrepared;
  int code = 0;
  QByteArray output;      ///< Standard output.
  QByteArray firstError;  ///< The first 64 KB of standard error ...
  QByteArray lastError;   ///< ... and what came last after them.
};

/// Runs the job to its end. A process between us and the child watches it: whatever the host has set for, or does at,
/// the ends of its own children makes no difference. The child and all its descendants are killed when a limit is
/// passed, `idle` cancels, the child ends before them, or the calling thread dies, however it does.
ChildEnd runChild(const ChildJob& job);

}  // namespace ost

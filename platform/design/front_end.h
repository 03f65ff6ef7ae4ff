// Programs other than Yosys that turn sources into Verilog, run as Yosys is: as child processes with limits.
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <functional>

namespace ost {

/// What a program for sources may take, and who is served meanwhile.
struct ToolLimits {
  QString workingDirectory;
  int timeLimitSeconds = 600;
  qint64 memoryLimitBytes = qint64(8) << 30;
  std::function<bool()> idle;
};

/// Runs `program` (looked up on the PATH) and gets what it prints, at most 512 MB. False with one text: that it is
/// missing and `wayOut`, a limit that was passed, or its first error, with the file and line that it names.
bool runFrontEnd(const char* program, const char* wayOut, const QList<QByteArray>& arguments, const ToolLimits& limits,
                 QByteArray& output, QString& error);

/// Whether a program of that name is on the PATH.
bool isOnPath(const char* program);

}  // namespace ost

// One run of one or several cores: all are armed before any is waited for.
#pragma once

#include "platform/jtag/connection.h"
#include "platform/reader/core_reader.h"

namespace ost {

class WaitLine;

struct CoreRun {
  int core = 0;  ///< Index into the plan's cores.
  RunSettings settings;
  bool isDone = false;
  Capture capture;  ///< After CaptureRun::readOut().
};

class CaptureRun {
 public:
  enum class End {
    Done,
    OutOfTime,
    Interrupted,  ///< By ^C (isInterrupted()).
    Failed,       ///< The server cannot be asked any more.
  };

  /// All must outlive it. `connection` gets the limits of time.
  CaptureRun(CoreReader& reader, Connection& connection, QVector<CoreRun>& runs, double timeoutSeconds)
      : reader_(reader), connection_(connection), runs_(runs), timeoutSeconds_(timeoutSeconds) {}

  bool arm(QString& error);
  /// Counts the time from here on.
  End wait(WaitLine& line, QString& error);
  /// Stops the cores that are not done and says why they are not. False when the server did not answer any more: then
  /// `text` is that, and `error` of wait() if that has failed.
  bool explain(End end, const QString& error, QString& text);
  bool readOut(QString& error);

 private:
  bool look(CoreRun& run, double seconds, QString& error);

  CoreReader& reader_;
  Connection& connection_;
  QVector<CoreRun>& runs_;
  double timeoutSeconds_;
  double waitedSeconds_ = 0;
};

}  // namespace ost

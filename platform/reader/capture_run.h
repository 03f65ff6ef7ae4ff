// One run of one or several cores: all are armed before any is waited for.
#pragma once

#include "platform/jtag/connection.h"
#include "platform/reader/core_reader.h"
#include "platform/system/deadline.h"

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
    NotYet,
    Done,
    OutOfTime,
    Interrupted,  ///< By ^C (isInterrupted()).
    Failed,       ///< The server cannot be asked any more.
  };

  /// All must outlive it. `connection` gets the limits of time.
  CaptureRun(CoreReader& reader, Connection& connection, QVector<CoreRun>& runs)
      : reader_(reader), connection_(connection), runs_(runs) {}

  bool arm(QString& error);
  /// Waits so long, counted from here on, while `line` shows where the cores stand.
  End wait(double timeoutSeconds, WaitLine& line, QString& error);
  /// The same in steps, for those who have something else to do between two looks at the cores: begins the wait,
  void beginWait(double timeoutSeconds);
  /// and looks at each core that is not done, for `seconds` in all. NotYet: look again.
  End look(double seconds, QString& error);
  /// Stops the cores that are not done and says why they are not. False when the server did not answer any more: then
  /// `text` is that, and `error` of wait() if that has failed.
  bool explain(End end, const QString& error, QString& text);
  bool readOut(QString& error);

 private:
  /// Where the first core that is not done stands. False when the server cannot be asked any more.
  bool progress(QString& text, QString& error);
  End endOfFailure() const { return deadline_.isOver() ? End::OutOfTime : End::Failed; }

  CoreReader& reader_;
  Connection& connection_;
  QVector<CoreRun>& runs_;
  double timeoutSeconds_ = 0;
  Deadline deadline_{0};
  double waitedSeconds_ = 0;
};

}  // namespace ost

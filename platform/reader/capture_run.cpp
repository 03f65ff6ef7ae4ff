// The wait goes round the cores in short looks, so that ^C, the time and the terminal get their turn.
#include "platform/reader/capture_run.h"

#include "platform/reader/wait_line.h"
#include "platform/system/interrupt.h"

namespace ost {
namespace {

/// What a wait may take beyond its time, for the exchange under way, the reasons and the stop: as long again, or this.
constexpr double kLeastGraceSeconds = 2;
constexpr double kLookSeconds = 0.2;  ///< For one round of all cores.

}  // namespace

bool CaptureRun::arm(QString& error) {
  for (CoreRun& run : runs_) {
    run.isDone = false;
    if (!reader_.arm(run.core, run.settings, error)) return false;
  }
  return true;
}

void CaptureRun::beginWait(double timeoutSeconds) {
  timeoutSeconds_ = timeoutSeconds;
  deadline_ = Deadline(timeoutSeconds);
  connection_.setTimeLimit(timeoutSeconds + qMax(timeoutSeconds, kLeastGraceSeconds));
}

CaptureRun::End CaptureRun::look(double seconds, QString& error) {
  bool allDone = true;
  for (CoreRun& run : runs_) {
    if (run.isDone) continue;
    const WaitLimit limit = {qMin(seconds / runs_.size(), qMax(0.0, deadline_.left())), 0};
    const WaitResult result = reader_.waitUntilDone(run.core, limit, error);
    waitedSeconds_ = timeoutSeconds_ - deadline_.left();
    if (result == WaitResult::Failed) return endOfFailure();
    run.isDone = result == WaitResult::Done;
    allDone = allDone && run.isDone;
  }
  if (!allDone) return deadline_.isOver() ? End::OutOfTime : End::NotYet;
  connection_.liftTimeLimit();
  return End::Done;
}

bool CaptureRun::progress(QString& text, QString& error) {
  for (const CoreRun& run : runs_) {
    if (run.isDone) continue;
    CoreStatus status;
    if (!reader_.status(run.core, status, error)) return false;
    text = QStringLiteral("%1; %2 s of %3 s")
               .arg(progressText(run.settings, status))
               .arg(waitedSeconds_, 0, 'f', 1)
               .arg(timeoutSeconds_);
    break;
  }
  return true;
}

CaptureRun::End CaptureRun::wait(double timeoutSeconds, WaitLine& line, QString& error) {
  beginWait(timeoutSeconds);
  for (;;) {
    const End end = look(kLookSeconds, error);
    if (end == End::Done || end == End::Failed || !error.isEmpty()) return end;
    if (isInterrupted()) return End::Interrupted;
    if (end == End::OutOfTime) return end;
    QString text;
    if (line.isSeen() && !progress(text, error)) return endOfFailure();
    line.show(text);
  }
}

bool CaptureRun::explain(End end, const QString& error, QString& text) {
  if (end == End::Interrupted) connection_.setTimeLimit(qMax(kLeastGraceSeconds, qMin(timeoutSeconds_, 10.0)));
  QStringList parts;
  bool known = error.isEmpty();
  for (const CoreRun& run : runs_) {
    if (run.isDone) continue;
    const QString when = end == End::Interrupted
                             ? QStringLiteral("by the interrupt after %1 s").arg(waitedSeconds_, 0, 'f', 1)
                             : QStringLiteral("within %1 s").arg(timeoutSeconds_);
    QStringList reasons(error);
    if (known) {
      CoreStatus status;
      QString failure;
      known = reader_.status(run.core, status, failure);
      reasons = known ? explainWaiting(run.settings, status) : QStringList(failure);
      // The reasons are what counts; a core that cannot even be stopped has been explained by them.
      if (known) reader_.stop(run.core, failure);
    }
    parts += QStringLiteral("The core \"%1\" has not completed its capture %2:\n  %3")
                 .arg(run.settings.core().name, when, reasons.join(QLatin1String("\n  ")));
  }
  text = parts.join(QLatin1Char('\n'));
  return known;
}

bool CaptureRun::readOut(QString& error) {
  for (CoreRun& run : runs_)
    if (!reader_.readOut(run.core, run.settings, run.capture, error)) return false;
  return true;
}

}  // namespace ost

// A thread runs the child process; what it finds is asked for under a mutex.
#include "platform/jtag/simulation.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QStringList>
#include <cerrno>
#include <climits>

#include "platform/system/files.h"
#include "platform/system/interrupt.h"

namespace ost {
namespace {

constexpr double kGraceSeconds = 2;  ///< For a simulation to end by itself.
constexpr double kAttemptSeconds = 0.1;
constexpr int kLastText = 2000;  ///< Bytes kept of what it printed.
constexpr int kLinesShown = 3;

}  // namespace

bool splitCommand(const QString& line, QList<QByteArray>& words, QString& error) {
  const QByteArray text = line.toLatin1();
  words.clear();
  bool inWord = false;
  char quote = 0;
  for (int i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (!quote && (c == ' ' || c == '\t' || c == '\n')) {
      inWord = false;
      continue;
    }
    if (!std::exchange(inWord, true)) words += QByteArray();
    if (c == '\\' && quote != '\'' && i + 1 < text.size())
      words.last() += text[++i];
    else if (quote ? c == quote : c == '\'' || c == '"')
      quote = quote ? 0 : c;
    else
      words.last() += c;
  }
  if (quote)
    error = QStringLiteral("The command \"%1\" has an open %2; close it.").arg(line, QChar::fromLatin1(quote));
  else if (words.isEmpty())
    error = QStringLiteral("The command is empty; give a program and its words, for example \"vvp -n tb.vvp\".");
  return !quote && !words.isEmpty();
}

bool Simulation::makeFolder(QString& error) {
  QByteArray folder = QFile::encodeName(QDir::tempPath()) + "/ost_capture.XXXXXX";
  if (!mkdtemp(folder.data())) {
    error = QStringLiteral("Cannot make a folder in \"%1\": %2.").arg(QDir::tempPath(), systemReason(errno));
    return false;
  }
  folder_ = folder;
  for (const char* name : {"/to_sim", "/from_sim"}) {
    if (mkfifo((folder_ + name).constData(), 0600) == 0) continue;
    error = QStringLiteral("Cannot make a FIFO in \"%1\": %2.").arg(QString::fromLatin1(folder_), systemReason(errno));
    return false;
  }
  return true;
}

std::unique_ptr<Simulation> Simulation::start(const QString& command, const QString& logFile, QString& error) {
  QList<QByteArray> words;
  std::unique_ptr<Simulation> simulation(new Simulation(command, logFile));
  if (!splitCommand(command, words, error)) return nullptr;
  if (!logFile.isEmpty()) {
    simulation->log_.reset(::open(logFile.toLatin1().constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
    if (!simulation->log_.isOpen()) {
      error = QStringLiteral("Cannot write \"%1\": %2.").arg(logFile, systemReason(errno));
      return nullptr;
    }
  }
  if (!simulation->makeFolder(error)) return nullptr;
  words += "+ostrel_fifo=" + simulation->folder_;
  simulation->runner_ = std::thread([one = simulation.get(), words] { one->run(words); });
  return simulation;
}

void Simulation::run(const QList<QByteArray>& words) {
  ChildJob job;
  job.program = words[0];
  job.arguments = words.mid(1);
  job.timeLimitSeconds = INT_MAX / 2;
  job.takeText = [this](const char* text, int count) { take(text, count); };
  job.idle = [this] {
    const std::lock_guard<std::mutex> lock(mutex_);
    return !stopping_;
  };
  const ChildEnd end = runChild(job);
  const std::lock_guard<std::mutex> lock(mutex_);
  end_ = end;
  over_ = true;
  changed_.notify_all();
}

void Simulation::take(const char* text, int count) {
  const bool written = !log_.isOpen() || writeAll(log_.fd(), text, count);
  const int code = errno;
  const std::lock_guard<std::mutex> lock(mutex_);
  if (!written && logFailure_ == 0) logFailure_ = code;
  lastText_ = (lastText_ + QByteArray(text, count)).right(kLastText);
}

bool Simulation::hasEnded(double seconds) {
  std::unique_lock<std::mutex> lock(mutex_);
  return changed_.wait_for(lock, std::chrono::duration<double>(seconds), [this] { return over_; });
}

ServerAddress Simulation::address() const {
  ServerAddress address;
  address.place = QString::fromLatin1(folder_);
  return address;
}

template <typename Attempt>
bool Simulation::attemptWhileRunning(double seconds, Attempt attempt, QString& error) {
  const Deadline deadline(seconds);
  while (!attempt()) {
    if (hasEnded()) {
      error = endText();
      return false;
    }
    if (!deadline.isOver() && !isInterrupted()) continue;
    error = QStringLiteral(
                "The simulation \"%1\" does not open its JTAG FIFOs; its test bench needs the module ostrel_jtag_sim.")
                .arg(command_);
    return false;
  }
  return true;
}

ConnectedTap Simulation::connect(const TapChoice& choice, double seconds, QString& error) {
  ConnectedTap way;
  const auto attempt = [&] { return bool((way = connectTap(address(), choice, kAttemptSeconds, error)).tap); };
  attemptWhileRunning(seconds, attempt, error);
  return way;
}

bool Simulation::open(ServerDescriptors& server, double seconds, QString& error) {
  const auto attempt = [&] { return openServer(address(), Deadline(kAttemptSeconds), server, error); };
  return attemptWhileRunning(seconds, attempt, error);
}

QString Simulation::endText() {
  const std::lock_guard<std::mutex> lock(mutex_);
  const QString reason = systemReason(end_.code);
  QString text;
  switch (end_.how) {
    case ChildEnd::NotStarted:
    case ChildEnd::NotPrepared:
    case ChildEnd::NoFolder:
      return QStringLiteral("Cannot start the simulation \"%1\": %2.").arg(command_, reason);
    case ChildEnd::Exited:
      text = QStringLiteral("exit status %1").arg(end_.code);
      break;
    case ChildEnd::Killed:
      text = QStringLiteral("signal %1").arg(end_.code);
      break;
    default:
      text = QStringLiteral("killed");
  }
  text = QStringLiteral("The simulation \"%1\" ended (%2) before the reader was done. ").arg(command_, text);
  if (end_.how == ChildEnd::Exited && end_.code == 0)
    text += QStringLiteral(
        "Take $finish out of its test bench, or let it come later: ostrel_jtag_sim ends the simulation when the reader "
        "leaves.");
  else
    text += QStringLiteral("Give \"-log FILE\" and look there for the reason.");
  const QStringList lines = QString::fromLatin1(lastText_).trimmed().split(QLatin1Char('\n'), Qt::SkipEmptyParts);
  if (!lines.isEmpty())
    text += QStringLiteral("\n  It printed last: ") +
            lines.mid(qMax(0, lines.size() - kLinesShown)).join(QStringLiteral("\n  "));
  return text;
}

bool Simulation::finish(QString& error) {
  if (runner_.joinable()) {
    if (!hasEnded(kGraceSeconds)) {
      const std::lock_guard<std::mutex> lock(mutex_);
      stopping_ = true;
    }
    runner_.join();
  }
  if (logFailure_ == 0 && log_.isOpen() && !storeAndClose(log_)) logFailure_ = errno;
  log_.reset();
  if (logFailure_ != 0) error = QStringLiteral("Cannot write \"%1\": %2.").arg(logFile_, systemReason(logFailure_));
  return logFailure_ == 0;
}

Simulation::~Simulation() {
  QString ignored;
  finish(ignored);
  if (folder_.isEmpty()) return;
  for (const char* name : {"/to_sim", "/from_sim"}) unlink((folder_ + name).constData());
  rmdir(folder_.constData());
}

}  // namespace ost

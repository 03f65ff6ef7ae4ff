// A simulation with platform/jtag/sim/ostrel_jtag_sim.v in its test bench, started, watched and ended from here.
#pragma once

#include <QByteArray>
#include <QList>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

#include "platform/jtag/connect_tap.h"
#include "platform/system/child_process.h"

namespace ost {

/// The words of a command line, separated by blanks. Quotes ('...' or "...") and a backslash keep a blank; nothing else
/// has a meaning: there is no shell. False when a quote is open at the end or there is no word.
bool splitCommand(const QString& line, QList<QByteArray>& words, QString& error);

class Simulation {
 public:
  /// Makes FIFOs in a folder of their own and starts the command with one more word, "+ostrel_fifo=FOLDER". What it
  /// prints goes into `logFile`, unless that is empty. Null with the reason in `error`.
  static std::unique_ptr<Simulation> start(const QString& command, const QString& logFile, QString& error);
  /// Ends it, when it does not end by itself within two seconds, and removes the FIFOs.
  ~Simulation();

  ServerAddress address() const;
  /// Connects to its JTAG pins; fails early when it ends.
  ConnectedTap connect(const TapChoice& choice, double seconds, QString& error);
  /// The same, without a protocol on top.
  bool open(ServerDescriptors& server, double seconds, QString& error);
  /// Whether it has ended, or ends within so many seconds.
  bool hasEnded(double seconds = 0);
  /// Why that is too early, what to do, and what it printed last.
  QString endText();
  /// Ends it as the destructor does. False when what it printed could not be stored.
  bool finish(QString& error);

 private:
  Simulation(const QString& command, const QString& logFile) : command_(command), logFile_(logFile) {}
  bool makeFolder(QString& error);
  void run(const QList<QByteArray>& words);
  void take(const char* text, int count);
  /// Repeats `attempt`, which waits for a moment only, until it succeeds or the simulation or the time is over.
  template <typename Attempt>
  bool attemptWhileRunning(double seconds, Attempt attempt, QString& error);

  QString command_, logFile_;
  QByteArray folder_;
  Descriptor log_;
  std::thread runner_;
  std::mutex mutex_;  ///< Guards all below.
  std::condition_variable changed_;
  bool stopping_ = false, over_ = false;
  int logFailure_ = 0;  ///< errno of the first write that failed.
  ChildEnd end_;
  QByteArray lastText_;
};

}  // namespace ost

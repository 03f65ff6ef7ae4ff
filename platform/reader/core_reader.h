// The life of a capture on one debug hub: identify, configure, arm, wait, read out.
#pragma once

#include "platform/reader/capture.h"
#include "platform/reader/core_status.h"
#include "platform/reader/hub_identity.h"

namespace ost {

/// How long to wait; whichever comes first.
struct WaitLimit {
  double seconds = 10;
  qint64 cycles = 0;  ///< TCK cycles, 0 = any number. A simulation repeats exactly with this limit only.
};

enum class WaitResult { Done, NotYet, Failed };

/// The `core` arguments are indexes into the plan's cores.
class CoreReader {
 public:
  /// Both must outlive the reader.
  CoreReader(HubLink& hub, const InsertPlan& plan) : hub_(hub), plan_(plan) {}

  bool identify(QString& error) { return identifyHub(hub_, plan_, error); }
  /// A fresh status where the sample clock runs; otherwise the flags are current and the rest is the last one known.
  bool status(int core, CoreStatus& status, QString& error);
  /// Ends a run, or aborts it; what it captured is gone.
  bool stop(int core, QString& error);
  /// Loads the settings and starts a run. One that was under way is stopped first.
  bool arm(int core, const RunSettings& settings, QString& error);
  /// NotYet: the limit came first; status() tells where the run stands.
  WaitResult waitUntilDone(int core, const WaitLimit& limit, QString& error);
  /// Reads the samples of a complete run that was armed with `settings`.
  bool readOut(int core, const RunSettings& settings, Capture& capture, QString& error);

 private:
  bool commandStatus(int core, HubReply& reply, QString& error);
  /// Sends ARM once, and STATUS instead of a second time. `reply` is that of either.
  bool sendArm(const HubCommand& arm, HubReply& reply, QString& error);
  bool load(int core, const RunSettings& settings, QString& error);
  bool loadOne(const HubCommand& command, const QByteArray& payload, int replyBits, QString& error);
  bool readWords(int core, int tag, int count, BitTable& words, QString& error);
  QString nameOf(int core) const { return plan_.cores[core].name; }

  HubLink& hub_;
  const InsertPlan& plan_;
};

}  // namespace ost

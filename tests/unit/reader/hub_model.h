// A debug hub in software, written from docs/debug-core.md: a TAP, the USER register and cores whose memories and
// status words the test fills in. Captures complete a given number of TCK cycles after they are armed.
#pragma once

#include <vector>

#include "platform/insert/insert_plan.h"
#include "platform/reader/jtag_port.h"
#include "platform/reader/read_layout.h"

namespace ost {

struct ModelCore {
  explicit ModelCore(const PlanCore& plan) : plan(plan), layout(plan) {}
  PlanCore plan;
  ReadLayout layout;
  std::vector<QByteArray> words;  ///< layout.words words of layout.wordBits bits.
  QByteArray statusTail;          ///< The status word after its tag.
  bool clockRuns = true;
  qint64 cyclesToDone = 500;  ///< Negative: never.

  bool armed = false, configured = false, fresh = false;
  int tag = 0, arms = 0;
  qint64 armedAt = 0;
  QByteArray chain;   ///< The last good configuration.
  QByteArray tables;  ///< The last good tables, one behind the other.
};

class HubModel : public JtagPort {
 public:
  explicit HubModel(const InsertPlan& plan);
  bool run(const QByteArray& tms, const QByteArray& tdi, QByteArray* tdo, QString& error) override;
  bool flush(QString&) override { return true; }

  std::vector<ModelCore> cores;
  quint64 hash;
  int version = 1;

 private:
  void clock(bool tms, bool tdi);
  void update();
  void execute();
  bool isDone(const ModelCore& core) const;
  QByteArray block(int address);

  int state_ = 0, ir_ = 1, irShift_ = 0, countedCores_;
  qint64 cycles_ = 0;
  bool tdo_ = false, writing_ = false, good_ = false, refused_ = false;
  QByteArray frame_, reply_, command_ = QByteArray(40, 0), payload_;
  int replyAt_ = 0, nextAddress_ = 0;
};

}  // namespace ost

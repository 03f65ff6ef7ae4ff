// Scans of a TAP as pin cycles.
#pragma once

#include "platform/jtag/jtag_port.h"
#include "platform/jtag/tap.h"

namespace ost {

/// Where the TAP stands in its chain: devices in BYPASS between TDI and it, and between it and TDO.
struct ChainPlace {
  int ahead = 0, behind = 0;
};

class TapDriver : public Tap {
 public:
  /// `port` must outlive it. With other devices in the chain the instructions are those of all of them.
  explicit TapDriver(JtagPort& port, ChainPlace place = {}) : port_(port), place_(place) {}

  bool select(const TapInstruction& instruction, bool& answers, QString& error) override;
  bool idle(int cycles, QString& error) override;
  bool scanData(const QByteArray& in, QByteArray* out, QString& error) override;
  bool flush(QString& error) override { return port_.flush(error); }
  qint64 cycles() const override { return cycles_; }

 private:
  bool move(const char* tms, QString& error);
  bool shift(const QByteArray& in, QByteArray* out, QString& error);

  JtagPort& port_;
  ChainPlace place_;
  qint64 cycles_ = 0;
};

}  // namespace ost

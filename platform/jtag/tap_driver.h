// Scans of a JTAG TAP (IEEE 1149.1) as pin cycles. Between two calls the TAP stays in Run-Test/Idle.
#pragma once

#include "platform/jtag/jtag_port.h"

namespace ost {

class TapDriver {
 public:
  explicit TapDriver(JtagPort& port) : port_(port) {}

  /// From any state through Test-Logic-Reset to Run-Test/Idle.
  bool reset(QString& error);
  /// Cycles spent in Run-Test/Idle. They are kept until something is read.
  bool idle(int cycles, QString& error);
  /// Shifts `width` bits of `value`, lowest first, through the instruction register. With `captured` reads what the
  /// register held.
  bool scanInstruction(quint32 value, int width, quint32* captured, QString& error);
  /// Shifts `in` (a byte of 0 or 1 for each bit, first shifted first) through the data register; with `out`, appends
  /// as many bits that came out. Two cycles in Run-Test/Idle follow, for registers that take their update late.
  bool scanData(const QByteArray& in, QByteArray* out, QString& error);
  bool flush(QString& error) { return port_.flush(error); }

  qint64 cycles() const { return cycles_; }  ///< TCK cycles so far.

 private:
  bool move(const char* tms, QString& error);
  bool shift(const QByteArray& in, QByteArray* out, QString& error);

  JtagPort& port_;
  qint64 cycles_ = 0;
};

}  // namespace ost

// The client of a server of virtual JTAG cables (Xilinx Virtual Cable protocol, version 1.0; usual port 2542).
#pragma once

#include "platform/jtag/connection.h"
#include "platform/jtag/jtag_port.h"

namespace ost {

class XvcPort : public JtagPort {
 public:
  /// `connection` must outlive it.
  explicit XvcPort(Connection& connection) : connection_(connection) {}
  /// Asks the server for its version and how long a vector it takes. The period of TCK stays as the server has it.
  bool open(QString& error);

  bool run(const QByteArray& tms, const QByteArray& tdi, QByteArray* tdo, QString& error) override;
  bool flush(QString& error) override { return shiftKept(nullptr, error); }

 private:
  /// Shifts all that is kept, and what its last `tdo` cycles read is appended.
  bool shiftKept(QByteArray* tdo, QString& error, int cyclesRead = 0);
  bool shift(int first, int count, QByteArray& levels, QString& error);

  Connection& connection_;
  int longestShift_ = 8;  ///< Bits.
  QByteArray tms_, tdi_;  ///< Cycles not sent yet.
  bool wasIdle_ = false;  ///< The last cycles were spent in Run-Test/Idle.
};

}  // namespace ost

// A JTAG port whose lines flip bits at random: what a long cable does, with a seed. For proving that the reader
// retries and delivers no wrong sample.
#pragma once

#include <random>

#include "platform/jtag/jtag_port.h"

namespace ost {

class FaultyPort : public JtagPort {
 public:
  /// Each level of TMS, TDI and TDO is inverted with the given probability (0 to 1).
  FaultyPort(JtagPort& port, quint32 seed, double tmsRate, double tdiRate, double tdoRate)
      : port_(port), random_(seed), tmsRate_(tmsRate), tdiRate_(tdiRate), tdoRate_(tdoRate) {}

  bool run(const QByteArray& tms, const QByteArray& tdi, QByteArray* tdo, QString& error) override;
  bool flush(QString& error) override { return port_.flush(error); }

  int faults() const { return faults_; }  ///< Bits inverted so far.

 private:
  QByteArray disturbed(QByteArray levels, double rate);

  JtagPort& port_;
  std::mt19937 random_;
  double tmsRate_, tdiRate_, tdoRate_;
  int faults_ = 0;
};

}  // namespace ost

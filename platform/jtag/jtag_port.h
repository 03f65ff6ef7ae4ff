// The pins of a JTAG adapter: cycles of TCK with TMS and TDI, and the levels of TDO.
#pragma once

#include <QByteArray>
#include <QString>

namespace ost {

class JtagPort {
 public:
  virtual ~JtagPort() = default;

  /// Runs one TCK cycle for each byte of `tms` and `tdi` (0 or 1, equally long). With `tdo`, appends the level of TDO
  /// before the rising edge of each cycle. A port may keep cycles that read nothing until the next call that reads.
  /// False with the reason in `error` when the other end is gone or silent; the port is of no more use then.
  virtual bool run(const QByteArray& tms, const QByteArray& tdi, QByteArray* tdo, QString& error) = 0;

  /// Sends what is kept.
  virtual bool flush(QString& error) = 0;
};

}  // namespace ost

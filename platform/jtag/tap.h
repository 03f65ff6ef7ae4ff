// One TAP of a JTAG chain (IEEE 1149.1) as its user sees it: scans, whoever moves the pins. Between two calls it stays
// in Run-Test/Idle, with the other devices of the chain in BYPASS.
#pragma once

#include <QByteArray>
#include <QString>
#include <climits>

namespace ost {

/// An instruction of the TAP, or of all devices of a chain as one number, the device next to TDO lowest.
struct TapInstruction {
  int width = 4;  ///< Bits, 2 to 32.
  quint32 code = 2;
};

/// All calls: false with the reason in `error` when the other end is gone, silent or says something else than its
/// protocol; the way is of no more use then.
class Tap {
 public:
  virtual ~Tap() = default;

  /// Resets the TAP and selects `instruction`. `answers`: whether what the instruction register captured is that of a
  /// TAP at all.
  virtual bool select(const TapInstruction& instruction, bool& answers, QString& error) = 0;
  /// Cycles spent in Run-Test/Idle. They may be kept until something is read.
  virtual bool idle(int cycles, QString& error) = 0;
  /// Shifts `in` (a byte of 0 or 1 for each bit, first shifted first) through the data register; with `out`, appends
  /// as many bits that came out. Two cycles in Run-Test/Idle follow, for registers that take their update late.
  virtual bool scanData(const QByteArray& in, QByteArray* out, QString& error) = 0;
  /// Sends what is kept.
  virtual bool flush(QString& error) = 0;

  virtual qint64 cycles() const = 0;                   ///< TCK cycles so far, as far as they are known here.
  virtual int longestScan() const { return INT_MAX; }  ///< Bits of a data scan that are wise in one call.
};

}  // namespace ost

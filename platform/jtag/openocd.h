// A TAP behind a running OpenOCD, over its Tcl port (6666 unless set otherwise): other debuggers can use the cable
// meanwhile, and the other devices of the chain are OpenOCD's business.
#pragma once

#include "platform/jtag/connection.h"
#include "platform/jtag/tap.h"

namespace ost {

class OpenOcdTap : public Tap {
 public:
  /// `connection` must outlive it.
  explicit OpenOcdTap(Connection& connection) : connection_(connection) {}
  /// Chooses the TAP `name`, or, when it is empty, the only one with `idcode`, or the only one at all. Otherwise the
  /// error names the TAPs that OpenOCD has.
  bool open(const QString& name, quint32 idcode, QString& error);

  bool select(const TapInstruction& instruction, bool& answers, QString& error) override;
  bool idle(int cycles, QString& error) override;
  bool scanData(const QByteArray& in, QByteArray* out, QString& error) override;
  bool flush(QString& error) override;
  qint64 cycles() const override { return cycles_; }
  int longestScan() const override;

 private:
  /// Evaluates what is kept and `script` in OpenOCD. `good` is whether it succeeded; `text` its result or reason.
  bool evaluate(const QByteArray& script, bool& good, QByteArray& text, QString& error);
  /// The same, where a failure in OpenOCD is final.
  bool mustEvaluate(const QByteArray& script, QByteArray& text, QString& error);

  Connection& connection_;
  QByteArray tap_;
  QByteArray kept_;     ///< Commands not sent yet.
  int idleCycles_ = 0;  ///< Not in `kept_` yet.
  bool selected_ = false;
  qint64 cycles_ = 0;
};

}  // namespace ost

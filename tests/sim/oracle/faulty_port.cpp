// Random inversions on the three lines.
#include "tests/sim/oracle/faulty_port.h"

namespace ost {

bool FaultyPort::run(const QByteArray& tms, const QByteArray& tdi, QByteArray* tdo, QString& error) {
  QByteArray read;
  if (!port_.run(disturbed(tms, tmsRate_), disturbed(tdi, tdiRate_), tdo ? &read : nullptr, error)) return false;
  if (tdo) *tdo += disturbed(read, tdoRate_);
  return true;
}

QByteArray FaultyPort::disturbed(QByteArray levels, double rate) {
  std::bernoulli_distribution hit(rate);
  for (char& level : levels) {
    if (!hit(random_)) continue;
    level = static_cast<char>(!level);
    ++faults_;
  }
  return levels;
}

}  // namespace ost

// The TAP's paths from Run-Test/Idle through a scan and back.
#include "platform/jtag/tap_driver.h"

namespace ost {

bool TapDriver::move(const char* tms, QString& error) {
  QByteArray levels;
  for (const char* level = tms; *level; ++level) levels += static_cast<char>(*level == '1');
  cycles_ += levels.size();
  return port_.run(levels, QByteArray(levels.size(), 0), nullptr, error);
}

bool TapDriver::shift(const QByteArray& in, QByteArray* out, QString& error) {
  QByteArray tms(in.size(), 0);
  tms[tms.size() - 1] = 1;  // The last bit moves while leaving Shift.
  cycles_ += in.size();
  return port_.run(tms, in, out, error);
}

bool TapDriver::idle(int cycles, QString& error) {
  cycles_ += cycles;
  return port_.run(QByteArray(cycles, 0), QByteArray(cycles, 0), nullptr, error);
}

bool TapDriver::select(const TapInstruction& instruction, bool& answers, QString& error) {
  QByteArray in, captured;
  for (int i = 0; i < instruction.width; ++i) in += static_cast<char>(instruction.code >> i & 1);
  // From any state five cycles lead to Test-Logic-Reset; one more costs nothing on a disturbed line.
  if (!move("1111110", error) || !move("1100", error) || !shift(in, &captured, error) || !move("10", error))
    return false;
  answers = captured.at(0) == 1 && captured.at(1) == 0;  // IEEE 1149.1: the two lowest bits captured are 01.
  return true;
}

bool TapDriver::scanData(const QByteArray& in, QByteArray* out, QString& error) {
  // What is shifted stands still in the bypass bits for a cycle each.
  const QByteArray whole = QByteArray(place_.behind, 0) + in + QByteArray(place_.ahead, 0);
  QByteArray read;
  if (!move("100", error) || !shift(whole, out ? &read : nullptr, error) || !move("1000", error)) return false;
  if (out) *out += read.mid(place_.behind, in.size());
  return true;
}

}  // namespace ost

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

bool TapDriver::reset(QString& error) {
  return move("1111110", error);
}

bool TapDriver::idle(int cycles, QString& error) {
  cycles_ += cycles;
  return port_.run(QByteArray(cycles, 0), QByteArray(cycles, 0), nullptr, error);
}

bool TapDriver::scanInstruction(quint32 value, int width, quint32* captured, QString& error) {
  QByteArray in(width, 0), out;
  for (int i = 0; i < width; ++i) in[i] = static_cast<char>(value >> i & 1);
  if (!move("1100", error) || !shift(in, captured ? &out : nullptr, error) || !move("10", error)) return false;
  if (captured) *captured = 0;
  for (int i = 0; i < out.size(); ++i) *captured |= static_cast<quint32>(out[i]) << i;
  return true;
}

bool TapDriver::scanData(const QByteArray& in, QByteArray* out, QString& error) {
  return move("100", error) && shift(in, out, error) && move("1000", error);
}

}  // namespace ost

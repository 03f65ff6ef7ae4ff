// Requests are words with binary numbers behind them, little endian; the first bit of a vector is bit 0 of its byte 0.
#include "platform/jtag/xvc.h"

#include "platform/jtag/answers.h"

namespace ost {
namespace {

constexpr int kKeepAtMost = 1 << 15;    ///< Cycles kept before they are sent without being asked for.
constexpr int kLongestInfo = 100;       ///< Characters of a server's answer about itself.
constexpr int kLongestShift = 1 << 17;  ///< Bits in one request, however many the server takes.

QByteArray packed(const QByteArray& levels, int first, int count) {
  QByteArray bytes((count + 7) / 8, 0);
  for (int i = 0; i < count; ++i)
    if (levels[first + i]) bytes[i / 8] = static_cast<char>(bytes[i / 8] | 1 << i % 8);
  return bytes;
}

}  // namespace

bool XvcPort::open(QString& error) {
  TextAnswer answer('\n', kLongestInfo);
  if (!connection_.exchange("getinfo:", &answer, error)) return false;
  const QByteArray info = answer.text(), name = "xvcServer_v1.";
  const int colon = info.indexOf(':');
  bool isNumber = false;
  const qint64 bytes = info.mid(colon + 1).trimmed().toLongLong(&isNumber);
  if (!info.startsWith(name) || colon < 0 || !isNumber || bytes < 2)
    return connection_.fail(
        QStringLiteral("it says of itself \"%1\"; is it a virtual cable, version 1.0?").arg(quotable(info)), error);
  // Some servers mean the vectors of TMS and TDI together.
  longestShift_ = static_cast<int>(qMin<qint64>(bytes / 2, kLongestShift / 8)) * 8;
  return true;
}

bool XvcPort::run(const QByteArray& tms, const QByteArray& tdi, QByteArray* tdo, QString& error) {
  tms_ += tms;
  tdi_ += tdi;
  // Idle cycles, and the moves behind them, are requests of their own: openFPGALoader 0.10, over FTDI cables, keeps TMS
  // up behind a single 1 between many 0 of a request, and loses what TDO says in the first bits behind a change of TMS.
  const bool isIdle = !tms.contains(1), wasIdle = std::exchange(wasIdle_, isIdle);
  if (!tdo && !isIdle && !wasIdle && tms_.size() < kKeepAtMost && !connection_.isBroken()) return true;
  return shiftKept(tdo, error, tms.size());
}

bool XvcPort::shiftKept(QByteArray* tdo, QString& error, int cyclesRead) {
  QByteArray levels;
  for (int first = 0; first < tms_.size(); first += longestShift_)
    if (!shift(first, qMin(longestShift_, tms_.size() - first), levels, error)) return false;
  tms_.clear();
  tdi_.clear();
  if (tdo) *tdo += levels.right(cyclesRead);
  return true;
}

bool XvcPort::shift(int first, int count, QByteArray& levels, QString& error) {
  QByteArray request = "shift:";
  for (int place = 0; place < 32; place += 8) request += static_cast<char>(count >> place & 0xFF);
  CountedAnswer answer((count + 7) / 8);
  if (!connection_.exchange(request + packed(tms_, first, count) + packed(tdi_, first, count), &answer, error))
    return false;
  for (int i = 0; i < count; ++i) levels += static_cast<char>(answer.bytes()[i / 8] >> i % 8 & 1);
  return true;
}

}  // namespace ost

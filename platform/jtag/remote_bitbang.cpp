// One character a pin change, one an answer.
#include "platform/jtag/remote_bitbang.h"

#include "platform/jtag/answers.h"

namespace ost {
namespace {

constexpr int kKeepAtMost = 1 << 16;  ///< Bytes kept before they are sent without being asked for.

/// Levels of TDO as the digits 0 and 1.
class Levels : public CountedAnswer {
 public:
  using CountedAnswer::CountedAnswer;
  QString take(const char* bytes, int count) override {
    for (int i = 0; i < count; ++i)
      if (bytes[i] != '0' && bytes[i] != '1')
        return QStringLiteral("it replied with the byte 0x%1 instead of \"0\" or \"1\"; is it a remote-bitbang server?")
            .arg(static_cast<unsigned char>(bytes[i]), 2, 16, QLatin1Char('0'));
    return CountedAnswer::take(bytes, count);
  }
};

}  // namespace

RemoteBitbang::~RemoteBitbang() {
  if (connection_.isBroken()) return;
  connection_.setSilenceLimit(1);
  connection_.setTimeLimit(1);
  kept_ += 'Q';
  QString ignored;
  flush(ignored);
}

bool RemoteBitbang::run(const QByteArray& tms, const QByteArray& tdi, QByteArray* tdo, QString& error) {
  for (int i = 0; i < tms.size(); ++i) {
    const char pins = static_cast<char>('0' + (tms[i] ? 2 : 0) + (tdi[i] ? 1 : 0));
    kept_ += pins;
    if (tdo) kept_ += 'R';
    kept_ += static_cast<char>(pins + 4);
  }
  if (!tdo) return (kept_.size() < kKeepAtMost && !connection_.isBroken()) || flush(error);
  Levels levels(tms.size());
  if (!connection_.exchange(std::exchange(kept_, QByteArray()), &levels, error)) return false;
  for (const char level : levels.bytes()) *tdo += static_cast<char>(level - '0');
  return true;
}

bool RemoteBitbang::flush(QString& error) {
  return connection_.exchange(std::exchange(kept_, QByteArray()), nullptr, error);
}

}  // namespace ost

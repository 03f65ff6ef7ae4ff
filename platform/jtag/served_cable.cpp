// Remote bitbang is what the simulation speaks itself. A virtual cable's vectors are taken apart into pin changes, one
// request after the other.
#include "platform/jtag/served_cable.h"

namespace ost {
namespace {

class BitbangCable : public ServedCable {
 public:
  bool take(const QByteArray& bytes, QByteArray& commands, QByteArray&) override {
    const int end = bytes.indexOf('Q');
    commands += end < 0 ? bytes : bytes.left(end);
    return end < 0;
  }
  bool answer(const QByteArray& levels, QByteArray&, QByteArray& replies) override {
    replies += levels;
    return true;
  }
};

class XvcCable : public ServedCable {
 public:
  bool take(const QByteArray& bytes, QByteArray& commands, QByteArray& replies) override {
    received_ += bytes;
    return received_.size() <= kMostAhead && goOn(commands, replies);
  }
  bool answer(const QByteArray& levels, QByteArray& commands, QByteArray& replies) override;

 private:
  static constexpr int kLongestVector = 2048;  ///< Bytes of TMS or of TDI.
  static constexpr int kLongestWord = 8;       ///< "getinfo:".
  static constexpr int kMostAhead = 1 << 16;   ///< Bytes of requests that a client sends without waiting.

  /// Requests while no levels are due.
  bool goOn(QByteArray& commands, QByteArray& replies);
  /// Takes the next `count` bytes behind a request's word of `word` characters; false when they have not all come.
  bool takeRequest(int word, int count, QByteArray& bytes);
  bool shift(int word, QByteArray& commands, bool& isWhole);

  QByteArray received_, levels_;
  int due_ = 0;  ///< Levels of the shift under way.
};

bool XvcCable::takeRequest(int word, int count, QByteArray& bytes) {
  if (received_.size() < word + count) return false;
  bytes = received_.mid(word, count);
  received_.remove(0, word + count);
  return true;
}

bool XvcCable::goOn(QByteArray& commands, QByteArray& replies) {
  for (bool isWhole = true; isWhole && due_ == 0;) {
    const int word = received_.indexOf(':') + 1;
    if (word == 0) return received_.size() < kLongestWord;
    const QByteArray name = received_.left(word);
    QByteArray bytes;
    if (name == "getinfo:") {
      takeRequest(word, 0, bytes);
      replies += "xvcServer_v1.0:" + QByteArray::number(kLongestVector) + '\n';
    } else if (name == "settck:") {
      isWhole = takeRequest(word, 4, bytes);
      replies += bytes;  // The period in ns, which a simulation has whatever it is.
    } else if (name != "shift:" || !shift(word, commands, isWhole)) {
      return false;
    }
  }
  return true;
}

bool XvcCable::shift(int word, QByteArray& commands, bool& isWhole) {
  quint32 count = 0;
  isWhole = received_.size() >= word + 4;
  for (int i = 0; isWhole && i < 4; ++i) count |= quint32(quint8(received_[word + i])) << 8 * i;
  if (count > 8 * kLongestVector) return false;
  const int bits = static_cast<int>(count), bytes = (bits + 7) / 8;
  QByteArray vectors;
  isWhole = isWhole && takeRequest(word, 4 + 2 * bytes, vectors);
  if (!isWhole) return true;
  const auto bitOf = [&vectors](int first, int i) { return vectors[first + i / 8] >> i % 8 & 1; };
  for (int i = 0; i < bits; ++i) {
    const char pins = static_cast<char>('0' + 2 * bitOf(4, i) + bitOf(4 + bytes, i));
    commands += pins;
    commands += 'R';
    commands += static_cast<char>(pins + 4);
  }
  due_ = bits;
  return true;
}

bool XvcCable::answer(const QByteArray& levels, QByteArray& commands, QByteArray& replies) {
  levels_ += levels;
  if (levels_.size() < due_) return true;
  QByteArray vector((due_ + 7) / 8, 0);
  for (int i = 0; i < due_; ++i)
    if (levels_[i] == '1') vector[i / 8] = static_cast<char>(vector[i / 8] | 1 << i % 8);
  replies += vector;
  levels_.clear();
  due_ = 0;
  return goOn(commands, replies);
}

}  // namespace

std::unique_ptr<ServedCable> makeServedCable(ServerAddress::Protocol protocol) {
  if (protocol == ServerAddress::Xvc) return std::make_unique<XvcCable>();
  return std::make_unique<BitbangCable>();
}

}  // namespace ost

// A transfer: load the words to write, describe it, start it once, wait for its end, fetch the words that were read.
#include "platform/reader/wishbone_reader.h"

#include <algorithm>

#include "platform/system/deadline.h"
#include "platform/system/interrupt.h"

namespace ost {
namespace {

constexpr int kAllLanes = 15;
constexpr int kStarts = 3;                       ///< Of one transfer, when noise has spoilt its description.
constexpr int kRetries = 16;                     ///< Of one word whose slave says `rty`.
constexpr int kFirstIdle = 8, kMostIdle = 1024;  ///< Cycles of TCK between two looks, doubling.

enum Reason { kComplete = 0, kError = 1, kRetry = 2, kNoAnswer = 3, kNoBus = 4 };

QString reasonText(int reason, quint32 address, bool isWrite) {
  const QString place = QStringLiteral("%1 %2").arg(isWrite ? QLatin1String("write to") : QLatin1String("read from"),
                                                    hexAddress(address));
  switch (reason) {
    case kError:
      return QStringLiteral("The slave ended the %1 with an error (err); check the address.").arg(place);
    case kRetry:
      return QStringLiteral("The slave asked %1 times to repeat the %2 (rty); try again later.")
          .arg(kRetries)
          .arg(place);
    case kNoAnswer:
      return QStringLiteral("No slave answered the %1 within %2 clocks of the bus; check the address.")
          .arg(place)
          .arg(kWishboneLimit);
    default:
      return QStringLiteral("The bus was not free for the %1 within %2 clocks; the design's own master holds it.")
          .arg(place)
          .arg(kWishboneLimit);
  }
}

QByteArray bitsOf(const QByteArray& bytes) {
  QByteArray bits;
  bits.reserve(bytes.size() * 8);
  for (const char byte : bytes) bits += numberBits(quint8(byte), 8);
  return bits;
}

}  // namespace

QString hexAddress(quint32 address) {
  return QStringLiteral("0x%1").arg(address, 8, 16, QLatin1Char('0'));
}

HubCommand WishboneReader::commandFor(HubOp op) const {
  HubCommand command;
  command.op = op;
  command.core = plan_.wishboneNumber();
  return command;
}

bool WishboneReader::command(const HubCommand& command, const QByteArray& payload, int replyBits, HubReply& reply,
                             QString& error) {
  return hub_.command(command, payload, replyBits, replyBits, reply, error);
}

/// Frames of rows, each repeated until the hub has it.
bool WishboneReader::load(const QByteArray& bytes, QString& error) {
  const QByteArray bits = bitsOf(bytes);
  const int words = bits.size() / kWishboneWordBits;
  const int most = qBound(1, (hub_.longestScan() - kBlockOverhead) / kWishboneWordBits, kWishboneWords);
  HubCommand command = commandFor(HubOp::Table);
  command.tableRows = kWishboneWords;
  for (int first = 0; first < words; first += command.rows) {
    command.address = first;
    command.rows = std::min(most, words - first);
    HubReply reply;
    if (!this->command(command, bits.mid(first * kWishboneWordBits, command.rows * kWishboneWordBits),
                       kWishboneWordBits, reply, error))
      return false;
    if (!reply.flags.refused) continue;
    error = QStringLiteral("The Wishbone master has not ended an earlier transfer; check that its bus clock runs.");
    return false;
  }
  return true;
}

/// The transfer is started at most once, however often its command is sent: the master refuses a tag that it knows.
bool WishboneReader::start(const Transfer& part, const QByteArray& bytes, int& tag, QString& error) {
  const QByteArray config = numberBits(part.address, 32) + numberBits(part.isWrite, 1) +
                            numberBits(quint64(part.lanes), 4) +
                            numberBits(quint64(part.count - 1), kWishboneIndexBits);
  for (int attempt = 0; attempt < kStarts; ++attempt) {
    HubReply reply;
    if (part.isWrite && !load(bytes, error)) return false;
    if (!command(commandFor(HubOp::Config), config, kWishboneStatusBits, reply, error)) return false;
    if (reply.flags.refused) break;
    HubCommand arm = commandFor(HubOp::Arm);
    tag = arm.tag = int(bitsNumber(reply.payload, 0, 8) + 1) & 0xFF;
    if (!command(arm, QByteArray(), kWishboneStatusBits, reply, error)) return false;
    // Refused because it is under way already, when the reply to the first copy of the command was lost.
    if (!reply.flags.refused || int(bitsNumber(reply.payload, 0, 8)) == tag) return true;
  }
  error = QStringLiteral(
              "The Wishbone master refuses a transfer at %1; check that its bus clock runs, and that nothing "
              "else uses this hub.")
              .arg(hexAddress(part.address));
  return false;
}

bool WishboneReader::waitForEnd(const Transfer& part, int tag, Ending& ending, QString& error) {
  const Deadline deadline(timeoutSeconds_);
  const HubCommand status = commandFor(HubOp::Status);
  HubReply reply;
  if (!command(status, QByteArray(), kWishboneStatusBits, reply, error)) return false;
  for (int idle = kFirstIdle; !reply.flags.ready; idle = std::min(2 * idle, kMostIdle)) {
    if (deadline.isOver() || isInterrupted()) {
      error =
          QStringLiteral("The transfer at %1 has not ended%2; check that the bus clock%3 runs.")
              .arg(hexAddress(part.address),
                   deadline.isOver() ? QStringLiteral(" within %1 s").arg(timeoutSeconds_) : QString(),
                   plan_.wishbone->isConnected ? QStringLiteral(" \"%1\"").arg(plan_.wishbone->clock.name) : QString());
      return false;
    }
    if (!hub_.idle(idle, error) || !hub_.look(status, kWishboneStatusBits, reply, error)) return false;
  }
  if (int(bitsNumber(reply.payload, 0, 8)) != tag) {
    error = QStringLiteral("Something else has used the Wishbone master during the transfer at %1.")
                .arg(hexAddress(part.address));
    return false;
  }
  ending.reason = int(bitsNumber(reply.payload, 8, 3));
  ending.word = int(bitsNumber(reply.payload, 11, kWishboneIndexBits));
  return true;
}

/// The first `count` words of a transfer of `all`, which lie at the buffer's end.
bool WishboneReader::fetch(int tag, int all, int count, QByteArray& bytes, QString& error) {
  constexpr int kBlockWords = 1 << kWishboneBlockBits;
  const int begin = kWishboneWords - all, end = begin + count;
  HubCommand command = commandFor(HubOp::Read);
  command.tag = tag;
  int failures = 0;
  for (command.address = begin; command.address < end;) {
    const int most = std::max(1, hub_.longestScan() / (kBlockOverhead + kBlockWords * kWishboneWordBits));
    QVector<int> blocks;  // the words of each
    int bits = 0;
    for (int at = command.address; at < end && blocks.size() < most; at += blocks.last()) {
      blocks.append(kBlockWords - at % kBlockWords);
      bits += kBlockOverhead + blocks.last() * kWishboneWordBits;
    }
    QByteArray scanned;
    if (!hub_.send(command, QByteArray(), error) || !hub_.scanReply(bits, scanned, error)) return false;
    const int before = command.address;
    int first = 0;
    HubReply reply;
    for (const int words : blocks) {
      if (!readBlock(scanned, first, words * kWishboneWordBits, command, reply) || reply.flags.refused) break;
      for (int i = 0; i < words && command.address + i < end; ++i)
        for (int byte = 0; byte < kWishboneWordBytes; ++byte)
          bytes += char(bitsNumber(reply.payload, i * kWishboneWordBits + byte * 8, 8));
      command.address += words;
      first += kBlockOverhead + words * kWishboneWordBits;
    }
    if (command.address >= end) break;
    failures = command.address == before ? failures + 1 : 0;
    if (failures >= HubLink::kAttempts) {
      error = unusableLineText("a block of words");
      return false;
    }
    if (!hub_.recover(error)) return false;
  }
  return true;
}

bool WishboneReader::transfer(quint32 address, bool isWrite, int lanes, int words, QByteArray& bytes, QString& error) {
  int done = 0, retries = 0;
  while (done < words) {
    const Transfer part{address + quint32(done) * kWishboneWordBytes, isWrite, lanes,
                        std::min(words - done, kWishboneWords)};
    int tag = 0;
    Ending ending;
    const QByteArray sent =
        isWrite ? bytes.mid(done * kWishboneWordBytes, part.count * kWishboneWordBytes) : QByteArray();
    if (!start(part, sent, tag, error) || !waitForEnd(part, tag, ending, error)) return false;
    const int good = ending.reason == kComplete ? part.count : ending.word;
    if (!isWrite && !fetch(tag, part.count, good, bytes, error)) return false;
    done += good;
    if (ending.reason == kComplete) continue;
    retries = good > 0 ? 1 : retries + 1;
    if (ending.reason == kRetry && retries < kRetries) continue;
    error = reasonText(ending.reason, address + quint32(done) * kWishboneWordBytes, isWrite);
    return false;
  }
  return true;
}

bool WishboneReader::checkRange(quint32 address, qint64 bytes, int size, QString& error) const {
  const qint64 end = qint64(1) << plan_.wishbone->addressBits;
  if (address % quint32(size)) {
    error = QStringLiteral("The address %1 is no multiple of %2; give one that is.").arg(hexAddress(address)).arg(size);
  } else if (address + bytes > end) {
    error =
        QStringLiteral("The bus has %1 address bits, so %2 is its last address; %3 bytes from %4 on are out of range.")
            .arg(plan_.wishbone->addressBits)
            .arg(hexAddress(quint32(end - 1)))
            .arg(bytes)
            .arg(hexAddress(address));
  } else if (size < kWishboneWordBytes && plan_.wishbone->isConnected && !plan_.wishbone->pin(WishboneSignal::Select)) {
    error =
        QStringLiteral("The slave \"%1\" has no byte lanes (sel); use words of 32 bits.").arg(plan_.wishbone->instance);
  } else {
    return true;
  }
  return false;
}

bool WishboneReader::read(quint32 address, int size, int count, QVector<quint32>& numbers, QString& error) {
  if (!checkRange(address, qint64(count) * size, size, error)) return false;
  const auto numberOf = [&](const QByteArray& bytes, int first) {
    quint32 number = 0;
    for (int i = 0; i < size; ++i) number = number << 8 | quint8(bytes[first + (isBigEndian() ? i : size - 1 - i)]);
    return number;
  };
  QByteArray bytes;
  if (size == kWishboneWordBytes) {
    const bool good = transfer(address, false, kAllLanes, count, bytes, error);
    for (int i = 0; i < bytes.size(); i += size) numbers.append(numberOf(bytes, i));
    return good;
  }
  for (int i = 0; i < count; ++i, address += quint32(size), bytes.clear()) {
    const int lane = address % kWishboneWordBytes;
    if (!transfer(address - quint32(lane), false, ((1 << size) - 1) << lane, 1, bytes, error)) return false;
    numbers.append(numberOf(bytes, lane));
  }
  return true;
}

bool WishboneReader::write(quint32 address, int size, const QVector<quint32>& numbers, QString& error) {
  if (!checkRange(address, qint64(numbers.size()) * size, size, error)) return false;
  QByteArray bytes;
  for (const quint32 number : numbers)
    for (int i = 0; i < size; ++i) bytes += char(number >> 8 * (isBigEndian() ? size - 1 - i : i));
  if (size == kWishboneWordBytes) return transfer(address, true, kAllLanes, numbers.size(), bytes, error);
  for (int i = 0; i < numbers.size(); ++i, address += quint32(size)) {
    const int lane = address % kWishboneWordBytes;
    QByteArray word(kWishboneWordBytes, 0);
    word.replace(lane, size, bytes.mid(i * size, size));
    if (!transfer(address - quint32(lane), true, ((1 << size) - 1) << lane, 1, word, error)) return false;
  }
  return true;
}

bool WishboneReader::readBytes(quint32 address, int words, QByteArray& bytes, QString& error) {
  return checkRange(address, qint64(words) * kWishboneWordBytes, kWishboneWordBytes, error) &&
         transfer(address, false, kAllLanes, words, bytes, error);
}

bool WishboneReader::writeBytes(quint32 address, const QByteArray& bytes, QString& error) {
  const int whole = bytes.size() / kWishboneWordBytes, rest = bytes.size() % kWishboneWordBytes;
  QByteArray words = bytes.left(whole * kWishboneWordBytes), last = bytes.mid(words.size());
  if (!checkRange(address, bytes.size(), kWishboneWordBytes, error) || (rest > 0 && !checkRange(address, 0, 1, error)))
    return false;
  if (!transfer(address, true, kAllLanes, whole, words, error)) return false;
  last.append(kWishboneWordBytes - rest, '\0');
  return rest == 0 || transfer(address + quint32(words.size()), true, (1 << rest) - 1, 1, last, error);
}

}  // namespace ost

// Transfers over the Wishbone master of a hub.
#pragma once

#include "platform/plan/insert_plan.h"
#include "platform/reader/hub_link.h"

namespace ost {

/// Bytes that one number stands for: 1, 2 or 4. The bus transfers a whole word of four, with the byte lanes of these.
constexpr int kWishboneWordBytes = 4;

class WishboneReader {
 public:
  /// Both must outlive it; the plan has a Wishbone master. A transfer that has not ended after `timeoutSeconds` is an
  /// error.
  WishboneReader(HubLink& hub, const InsertPlan& plan, double timeoutSeconds)
      : hub_(hub), plan_(plan), timeoutSeconds_(timeoutSeconds) {}

  /// Reads `count` numbers of `size` bytes from `address` on. All: false with `error`, which names the address; what
  /// was written before it stays written.
  bool read(quint32 address, int size, int count, QVector<quint32>& numbers, QString& error);
  bool write(quint32 address, int size, const QVector<quint32>& numbers, QString& error);
  /// The bytes at `address`, a multiple of 4, and behind it, as they stand in memory.
  bool readBytes(quint32 address, int words, QByteArray& bytes, QString& error);
  bool writeBytes(quint32 address, const QByteArray& bytes, QString& error);

 private:
  /// What a transfer is to do: `count` words from the word at `address` on.
  struct Transfer {
    quint32 address;
    bool isWrite;
    int lanes;  ///< Bit k: the byte at address + k.
    int count;
  };
  struct Ending {
    int reason = 0, word = 0;
  };
  bool checkRange(quint32 address, qint64 bytes, int size, QString& error) const;
  /// Whole words; `bytes` holds those to write or gets those read.
  bool transfer(quint32 address, bool isWrite, int lanes, int words, QByteArray& bytes, QString& error);
  bool start(const Transfer& part, const QByteArray& bytes, int& tag, QString& error);
  bool load(const QByteArray& bytes, QString& error);
  bool waitForEnd(const Transfer& part, int tag, Ending& ending, QString& error);
  bool fetch(int tag, int last, int count, QByteArray& bytes, QString& error);
  HubCommand commandFor(HubOp op) const;
  bool command(const HubCommand& command, const QByteArray& payload, int replyBits, HubReply& reply, QString& error);
  bool isBigEndian() const { return plan_.wishbone->isBigEndian; }

  HubLink& hub_;
  const InsertPlan& plan_;
  const double timeoutSeconds_;
};

/// "0x00001000"
QString hexAddress(quint32 address);

}  // namespace ost

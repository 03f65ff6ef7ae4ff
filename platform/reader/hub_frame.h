// Frames of the debug hub's USER register: commands, whose CRC precedes the payload, and reply blocks, whose CRC
// follows it. Bits are bytes of 0 or 1 in the order in which they cross the line.
#pragma once

#include <QByteArray>

namespace ost {

enum class HubOp { Status = 0, Info = 1, Read = 2, Config = 3, Table = 4, Arm = 5, Stop = 6 };

struct HubCommand {
  HubOp op = HubOp::Status;
  int core = 0;
  int tag = 0;        ///< Run's tag (Arm, Read) or expression (Table), 0 to 255.
  int address = 0;    ///< First word (Read) or row (Table), 20 bits.
  int rows = 0;       ///< Table: rows in the payload,
  int tableRows = 1;  ///< and of the whole table, a power of two.
};

constexpr int kCommandBits = 40;
constexpr int kFlagBits = 8;
constexpr int kCrcBits = 32;
/// Bits of a reply block around its payload.
constexpr int kBlockOverhead = kCommandBits + kFlagBits + kCrcBits;

struct HubFlags {
  bool ready = false, armed = false, done = false, configured = false, fresh = false, refused = false;
};

struct HubReply {
  HubFlags flags;
  QByteArray payload;
};

/// `count` bits of `value`, least significant first.
QByteArray numberBits(quint64 value, int count);
/// The number in `count` (at most 64) bits from `first` on, least significant first.
quint64 bitsNumber(const QByteArray& bits, int first, int count);

/// The CRC register after `bits`, starting from `seed`.
quint32 frameCrc(const QByteArray& bits, quint32 seed = 0xFFFFFFFFu);

/// The write scan of a command: start bit, command, CRC prefix, payload.
QByteArray writeFrame(const HubCommand& command, const QByteArray& payload);

/// Takes one reply block from `first` on out of `bits`. False unless its CRC is correct, it echoes `expected` and
/// holds the bit that is always 1. The echo of a Table command has counted the rows that were taken; how many bits of
/// it count depends on the hub's largest memory, so that only those of the table's own address are looked at.
bool readBlock(const QByteArray& bits, int first, int payloadBits, const HubCommand& expected, HubReply& reply);

}  // namespace ost

// The CRC as docs/debug-core.md, section 2 defines it: CRC-32's polynomial, most significant bit first.
#include "platform/reader/hub_frame.h"

namespace ost {
namespace {

constexpr quint32 kPolynomial = 0x04C11DB7u;
/// The register's value after a good write frame.
constexpr quint32 kGoodResidue = 0xC704DD7Bu;

QByteArray commandBits(const HubCommand& command) {
  return numberBits(static_cast<quint64>(command.op), 4) + numberBits(command.core, 8) + numberBits(command.tag, 8) +
         numberBits(command.address, 20);
}

quint32 stepBack(quint32 state, bool bit) {
  const bool feedback = state & 1;
  state = (state ^ (feedback ? kPolynomial : 0)) >> 1;
  return state | (feedback != bit ? 0x80000000u : 0);
}

QByteArray crcBits(quint32 value) {
  QByteArray bits;
  for (int i = 31; i >= 0; --i) bits += static_cast<char>(value >> i & 1);
  return bits;
}

}  // namespace

QByteArray numberBits(quint64 value, int count) {
  QByteArray bits(count, 0);
  for (int i = 0; i < count && i < 64; ++i) bits[i] = static_cast<char>(value >> i & 1);
  return bits;
}

quint64 bitsNumber(const QByteArray& bits, int first, int count) {
  quint64 value = 0;
  for (int i = 0; i < count; ++i) value |= quint64(bits[first + i] & 1) << i;
  return value;
}

quint32 frameCrc(const QByteArray& bits, quint32 seed) {
  quint32 crc = seed;
  for (char bit : bits) {
    const bool feedback = (crc >> 31) != quint32(bit & 1);
    crc = (crc << 1) ^ (feedback ? kPolynomial : 0);
  }
  return crc;
}

QByteArray writeFrame(const HubCommand& command, const QByteArray& payload) {
  quint32 required = kGoodResidue;
  for (int i = payload.size() - 1; i >= 0; --i) required = stepBack(required, payload[i]);
  for (int i = 0; i < kCrcBits; ++i) required = stepBack(required, false);
  const QByteArray head = commandBits(command);
  return QByteArray(1, 1) + head + crcBits(frameCrc(head) ^ required) + payload;
}

bool readBlock(const QByteArray& bits, int first, int payloadBits, const HubCommand& expected, HubReply& reply) {
  const QByteArray block = bits.mid(first, kBlockOverhead + payloadBits);
  if (block.size() < kBlockOverhead + payloadBits) return false;
  const QByteArray checked = block.left(block.size() - kCrcBits);
  if (crcBits(frameCrc(checked)) != block.right(kCrcBits)) return false;
  const char* flags = checked.constData() + kCommandBits;
  const int echoed = expected.op == HubOp::Table ? 20 : kCommandBits;
  if (checked.left(echoed) != commandBits(expected).left(echoed) || !flags[7]) return false;
  if (expected.op == HubOp::Table) {
    const int next = expected.address + (flags[5] ? 0 : expected.rows);
    if ((bitsNumber(checked, 20, 20) ^ quint64(next)) & quint64(expected.tableRows - 1)) return false;
  }
  reply.flags.ready = flags[0];
  reply.flags.armed = flags[1];
  reply.flags.done = flags[2];
  reply.flags.configured = flags[3];
  reply.flags.fresh = flags[4];
  reply.flags.refused = flags[5];
  reply.payload = checked.mid(kCommandBits + kFlagBits);
  return true;
}

}  // namespace ost

// What the plan says of the Wishbone master: the bus that it drives, and how the words of that are laid out.
#pragma once

#include <QPair>
#include <QString>
#include <QStringList>
#include <QVector>

#include "platform/netlist/net_bit.h"

namespace ost {

/// A signal of a Wishbone slave's port, as the standard calls it, without its direction.
enum class WishboneSignal { Cycle, Strobe, Write, Address, DataIn, Select, DataOut, Ack, Error, Retry, Type, Burst };

QStringList wishboneSignalWords();  ///< By WishboneSignal: "cyc", "stb", ...

/// A port of the slave that belongs to its bus.
struct WishbonePin {
  WishboneSignal signal;
  QString port;   ///< Of the slave's module, as Yosys names it.
  int width = 1;  ///< Bits.
};

struct PlanWishbone {
  bool isConnected = false;  ///< To a slave of the design; otherwise the bus is ports of the top.
  bool isBigEndian = true;   ///< The byte at the lowest address of a word is in its bits 31 to 24.
  int addressBits = 32;      ///< Of an address in bytes, 2 to 32.
  /// Without a slave: the beginning of the ports' names; chosen by the insertion, not part of the hash.
  QString portPrefix = QStringLiteral("ostrel_wb_");
  // With a slave:
  QString instance;           ///< In the top, as Yosys names it.
  NetBit clock;               ///< Of the slave.
  int addressOffset = 0;      ///< Bit of the byte address that is the slave's lowest address bit: 0 or 2.
  QVector<WishbonePin> pins;  ///< Each signal at most once.

  const WishbonePin* pin(WishboneSignal signal) const;
};

/// The fields of the self-description behind the kind, as (bits, value): the address's bits, the buffer's words, its
/// block size, the byte order and the lengths of configuration and status.
QList<QPair<int, qint64>> wishboneInfo(const PlanWishbone& wishbone);

/// Words of the buffer, which is what one transfer can carry.
constexpr int kWishboneWords = 512;
constexpr int kWishboneWordBits = 32;
constexpr int kWishboneIndexBits = 9;    ///< log2(kWishboneWords)
constexpr int kWishboneBlockBits = 7;    ///< log2(words of a read-out block)
constexpr int kWishboneConfigBits = 46;  ///< Address (32), write (1), byte lanes (4), words - 1 (9).
constexpr int kWishboneStatusBits = 20;  ///< Tag (8), end (3), the word at which it ended (9).
/// Clocks of the bus that a word may take, from the request for the bus or from the strobe on.
constexpr int kWishboneLimit = 65535;

}  // namespace ost

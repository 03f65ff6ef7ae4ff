// The signals of the bus by name, and the pins of the slave.
#include "platform/plan/wishbone_plan.h"

namespace ost {

QStringList wishboneSignalWords() {
  return {QStringLiteral("cyc"),   QStringLiteral("stb"), QStringLiteral("we"),    QStringLiteral("adr"),
          QStringLiteral("dat_i"), QStringLiteral("sel"), QStringLiteral("dat_o"), QStringLiteral("ack"),
          QStringLiteral("err"),   QStringLiteral("rty"), QStringLiteral("cti"),   QStringLiteral("bte")};
}

const WishbonePin* PlanWishbone::pin(WishboneSignal signal) const {
  for (const WishbonePin& pin : pins)
    if (pin.signal == signal) return &pin;
  return nullptr;
}

QList<QPair<int, qint64>> wishboneInfo(const PlanWishbone& wishbone) {
  return {{8, wishbone.addressBits}, {16, kWishboneWordBits},   {8, kWishboneBlockBits},   {8, wishbone.isBigEndian},
          {16, kWishboneIndexBits},  {32, kWishboneConfigBits}, {16, kWishboneStatusBits}, {16, 0}};
}

}  // namespace ost

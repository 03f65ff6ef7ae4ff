// The figures of a plan.
#include "platform/plan/insert_plan.h"

namespace ost {

qint64 PlanCore::readSampleBits() const {
  qint64 shown = 0;
  for (const PlanProbe& probe : probes) shown += probe.positions.size();
  return depth * qMax(shown, qint64(sampleBits()));
}

QStringList jtagWayWords() {
  return {QStringLiteral("pins"), QStringLiteral("bscane2"), QStringLiteral("gw_jtag"), QStringLiteral("wrapper")};
}

QStringList replayBitWords() {
  return {QStringLiteral("0"), QStringLiteral("1"), QStringLiteral("x"), QStringLiteral("clock")};
}

int PlanJtag::instructionWidth() const {
  switch (way) {
    case JtagWay::Pins:
      return 4;
    case JtagWay::Bscane2:
      return 6;
    case JtagWay::GwJtag:
      return 8;
    case JtagWay::Wrapper:
      break;
  }
  return 0;
}

quint32 PlanJtag::instructionCode() const {
  // USER, then USER1 to USER4 and ER1, ER2 as the vendors document them.
  if (way == JtagWay::Bscane2) return chain <= 2 ? quint32(1 + chain) : quint32(0x1F + chain);
  return way == JtagWay::GwJtag ? quint32(0x41 + chain) : 2;
}

}  // namespace ost

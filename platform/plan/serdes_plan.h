// What the plan says of the serdes core: the signals that it watches, and the layout that follows from their number.
#pragma once

#include <QByteArray>
#include <QPair>
#include <QVector>

#include "platform/netlist/net_bit.h"

namespace ost {

/// A bit that the design marks with `ostrel_watch`, and the attribute's text.
struct PlanWatched {
  NetBit net;
  QString word;
};

/// The text for a net whose frequency is measured; others are counted.
constexpr char kSerdesClockWord[] = "clock";
/// Whether the text of an attribute can be shown: a letter, then letters, digits, '_', '-' and '.', 32 at most.
bool isSerdesWord(const QString& word);

constexpr int kMaxSerdesSignals = 254;  ///< Clocks and levels of a core together.
constexpr int kSerdesCountBits = 14;
constexpr int kSerdesCellBits = kSerdesCountBits + 2;  ///< Count, changed, level.
constexpr int kSerdesDivider = 64;                     ///< Cycles of a watched clock, or of TCK, that count as one.

struct PlanSerdes {
  NetBit clock;  ///< On which all is sampled and counted.
  bool hasReset = false;
  NetBit reset;  ///< Active high.
  QVector<PlanWatched> clocks, levels;

  int rows() const { return 2 + clocks.size() + levels.size(); }  ///< Rounds and TCK come first.
  int rowBits() const;
  int edgeBits() const;    ///< Of the rising edges of a level in a round of all rows.
  int statusBits() const;  ///< Of a reply.
};

/// The fields of the self-description behind the kind, as (bits, value): the numbers of clocks and levels, from which
/// all else follows.
QList<QPair<int, qint64>> serdesInfo(const PlanSerdes& serdes);

}  // namespace ost

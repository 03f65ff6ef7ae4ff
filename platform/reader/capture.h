// A capture as read from a core: windows of samples, decoded by the plan of the core.
#pragma once

#include <QByteArray>
#include <QString>
#include <QVector>
#include <vector>

#include "platform/plan/insert_plan.h"

namespace ost {

/// Rows of equally many bits, packed.
class BitTable {
 public:
  explicit BitTable(int width = 0) : width_(width) {}

  int width() const { return width_; }
  int rows() const { return rows_; }
  /// `bits` holds width() bytes of 0 or 1, bit 0 first.
  void append(const char* bits);
  bool at(int row, int bit) const {
    const size_t index = size_t(row) * width_ + bit;
    return words_[index / 64] >> (index % 64) & 1;
  }
  /// `count` (at most 64) bits from `first` on, bit `first` in the lowest place.
  quint64 field(int row, int first, int count) const;

 private:
  int width_;
  int rows_ = 0;
  std::vector<quint64> words_;
};

struct CaptureWindow {
  int firstRow = 0;
  int samples = 0;
  int trigger = 0;  ///< Sample of the window at which the trigger condition was met.
};

struct Capture {
  PlanCore core;
  BitTable table;  ///< One row a sample, oldest first within a window, the windows in order.
  QVector<CaptureWindow> windows;

  bool probeBit(int row, int bit) const { return table.at(row, bit); }
  bool unitState(int row, int unit) const { return table.at(row, core.probeWidth() + unit); }
  /// The stored counter value, which wraps at 2^timestampBits.
  quint64 timestamp(int row) const { return table.field(row, table.width() - core.timestampBits, core.timestampBits); }
  /// The bits of a probe as '0' and '1', leftmost (most significant) first.
  QByteArray probeBits(int row, const PlanProbe& probe) const;
};

/// What one run of one or several cores gave.
struct CaptureSet {
  QString topModule;
  QString projectName;
  QByteArray projectHash;  ///< As in InsertPlan.
  QVector<Capture> cores;
};

/// What views show of a probe's `bits`: the name of the value where its type has one, else digits.
QByteArray valueText(const PlanProbe& probe, const QByteArray& bits, Radix radix);

/// Digits of `bits` ('0', '1' or 'x', leftmost first) in `radix`, without a prefix. Decimal is unsigned.
QByteArray digitsOf(const QByteArray& bits, Radix radix);

}  // namespace ost

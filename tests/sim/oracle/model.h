// The oracle: from a project, the run's choices and a record of the nets at every sample clock edge, which samples a
// core must return. Written from docs/debug-core.md, section 5, without a look at the hardware.
#pragma once

#include <QByteArray>
#include <QHash>
#include <QVector>

#include "tests/sim/oracle/project.h"

namespace oracle {

/// The nets of a device just before each edge of one clock.
struct Record {
  QHash<QString, int> columns;  ///< By bit name.
  QVector<QByteArray> rows;     ///< '0', '1', 'x', 'z'
  QVector<qint64> times;        ///< ps
  int column(const QString& bit) const {
    if (!columns.contains(bit)) throw Broken{"the device's list of nets lacks " + bit};
    return columns[bit];
  }
  /// Whether the bit is known to be at that level.
  bool is(char level, int row, const QString& bit) const { return rows[row][column(bit)] == level; }
  bool at(int row, const QString& bit) const { return is('1', row, bit); }
};

struct ExpectedSample {
  int row = 0;  ///< Of the record.
  QVector<bool> units;
};

/// Where a run stands after an edge of its clock.
struct Progress {
  bool sampled, searching, triggered, looked;
  int events;
  QVector<int> steps;  ///< Of the enabled expressions.
};

struct Expected {
  bool complete = false;  ///< False: the record ends before the run is done.
  QVector<QVector<ExpectedSample>> windows;
  QVector<int> triggerRows;  ///< Record rows of the triggers.
  int rowsSeen = 0;          ///< Rows until the run was done.
  QVector<Progress> progress;
};

/// States of a core's units at each sample, with their history.
class UnitStates {
 public:
  UnitStates(const Record& record, const QVector<Unit>& units);
  /// At the run's next sample.
  QVector<bool> next(int row);

 private:
  struct Compiled {
    QVector<int> columns;  ///< Leftmost first.
    QString op;
    QByteArray digits;  ///< Binary, leftmost first, 'x' don't-care; as wide as `columns`, or the serial pattern.
  };
  const Record& record_;
  QVector<Compiled> units_;
  QVector<int> history_;  ///< Rows of the run's samples.
};

/// Binary digits, leftmost first, `width` of them (0: as many as the digits spell).
QByteArray binaryDigits(const QString& radix, const QString& digits, int width);

/// The run whose edge 0 is row `armRow`, as far as row `endRow` (-1: to its end); its progress from row `watchRow` on
/// (-1: not at all).
Expected expectedCapture(const Core& core, const RunChoice& choice, const Record& record, int armRow, int endRow = -1,
                         int watchRow = -1);

}  // namespace oracle

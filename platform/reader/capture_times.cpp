// Distances of samples, and lengths of time as text.
#include "platform/reader/capture_times.h"

#include <QRegularExpression>

namespace ost {
namespace {

struct Unit {
  const char* name;
  qint64 femtoseconds;
};

constexpr Unit kUnits[] = {{"fs", 1}, {"ps", 1000}, {"ns", 1000000}, {"us", 1000000000}, {"ms", 1000000000000}};

/// Units of time from one row to a later one.
qint64 distanceOf(const Capture& capture, int earlier, int later) {
  const quint64 mask = (quint64(1) << capture.core.timestampBits) - 1;
  return qMax<qint64>(1, (capture.timestamp(later) - capture.timestamp(earlier)) & mask);
}

}  // namespace

QVector<qint64> sampleTimes(const Capture& capture) {
  QVector<qint64> times;
  int lastRow = -1;
  for (const CaptureWindow& window : capture.windows) {
    for (int i = 0; i < window.samples; ++i) {
      const int row = window.firstRow + i;
      qint64 distance = i == 0 ? 2 : 1;
      if (capture.core.timestampBits && lastRow >= 0) distance = distanceOf(capture, lastRow, row);
      times.append(times.isEmpty() ? 0 : times.last() + distance);
      lastRow = row;
    }
  }
  return times;
}

QByteArray ClockPeriod::text() const {
  const Unit* unit = kUnits;
  for (const Unit& one : kUnits)
    if (femtoseconds >= one.femtoseconds) unit = &one;
  return QByteArray::number(double(femtoseconds) / unit->femtoseconds, 'g', 12) + ' ' + unit->name;
}

bool parsePeriod(const QString& text, ClockPeriod& period) {
  static const QRegularExpression form(QStringLiteral("^([0-9]{1,6})(?:\\.([0-9]{1,6}))?([fpnum]s)$"));
  const QRegularExpressionMatch match = form.match(text);
  if (!match.hasMatch()) return false;
  for (const Unit& unit : kUnits) {
    if (match.captured(3) != QLatin1String(unit.name)) continue;
    qint64 parts = 1;  // Of the unit, in its last digit.
    for (int i = 0; i < match.capturedLength(2); ++i) parts *= 10;
    const qint64 fraction = match.captured(2).toInt() * unit.femtoseconds;
    if (fraction % parts != 0) return false;
    period.femtoseconds = match.captured(1).toInt() * unit.femtoseconds + fraction / parts;
  }
  return period.isKnown();
}

}  // namespace ost

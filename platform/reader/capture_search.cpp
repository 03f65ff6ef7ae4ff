// Units as docs/debug-core.md, section 5, defines them, row by row.
#include "platform/reader/capture_search.h"

#include <QHash>
#include <algorithm>

#include "platform/trigger/trigger_expression.h"

namespace ost {
namespace {

/// The probe bits that `inputs` compare; an index of -1 for one that is not captured.
QVector<int> capturedBits(const PlanCore& core, const QVector<int>& inputs) {
  const auto keyOf = [](const NetBit& bit) { return qMakePair(qMakePair(bit.instancePath, bit.net), bit.bit); };
  QHash<QPair<QPair<QString, QString>, int>, int> places;
  for (int i = 0; i < core.probeBits.size(); ++i) places.insert(keyOf(core.probeBits[i]), i);
  QVector<int> bits;
  for (const int input : inputs) bits += places.value(keyOf(core.triggerBits[input]), -1);
  return bits;
}

/// A unit over the samples of one window.
class UnitOnSamples {
 public:
  UnitOnSamples(const Capture& capture, const CaptureWindow& window, const PlanUnit& unit, const QVector<int>& bits)
      : capture_(capture), window_(window), unit_(unit), bits_(bits) {}

  bool holds(int sample) const {
    switch (unit_.op) {
      case Operator::Equal:
      case Operator::NotEqual:
        return equals(sample) == (unit_.op == Operator::Equal);
      case Operator::RisingEdge:
      case Operator::FallingEdge:
        return hasEdge(sample, unit_.op == Operator::RisingEdge);
      case Operator::SerialCompare:
        return endsPattern(sample);
      case Operator::Less:
      case Operator::GreaterEqual:
        return (compare(sample) < 0) == (unit_.op == Operator::Less);
      case Operator::Greater:
      case Operator::LessEqual:
        return (compare(sample) > 0) == (unit_.op == Operator::Greater);
    }
    return false;
  }

 private:
  bool bit(int sample, int i) const { return capture_.probeBit(window_.firstRow + sample, bits_[i]); }
  bool isCompared(int i) const { return unit_.mask[i] == '1'; }
  bool isOne(int i) const { return unit_.value[i] == '1'; }

  bool equals(int sample) const {
    for (int i = 0; i < unit_.width; ++i)
      if (isCompared(i) && bit(sample, i) != isOne(i)) return false;
    return true;
  }
  bool hasEdge(int sample, bool rising) const {
    if (sample == 0) return false;
    for (int i = 0; i < unit_.width; ++i)
      if (isCompared(i) && bit(sample, i) == rising && bit(sample - 1, i) != rising) return true;
    return false;
  }
  /// The newest sample comes first in the pattern.
  bool endsPattern(int sample) const {
    for (int i = 0; i < unit_.width; ++i)
      if (isCompared(i) && (i > sample || bit(sample - i, 0) != isOne(i))) return false;
    return true;
  }
  /// Below, at or above 0, as the bits are less than, equal to or greater than the value.
  int compare(int sample) const {
    for (int i = unit_.width - 1; i >= 0; --i)
      if (bit(sample, i) != isOne(i)) return isOne(i) ? -1 : 1;
    return 0;
  }

  const Capture& capture_;
  const CaptureWindow& window_;
  const PlanUnit& unit_;
  const QVector<int>& bits_;
};

bool isSame(const PlanUnit& one, const PlanUnit& other) {
  return one.op == other.op && one.value == other.value && one.mask == other.mask;
}

/// For each sample of the window whether the unit holds.
bool statesOf(const Capture& capture, const CaptureWindow& window, const PlanUnit& unit, int number,
              QVector<bool>& states, QString& error) {
  const QVector<int> bits = capturedBits(capture.core, unit.inputs);
  const int missing = bits.indexOf(-1);
  const bool stored = capture.core.includeTrigger && isSame(unit, capture.core.units[number]);
  if (missing >= 0 && !stored) {
    error = QStringLiteral(
                "The unit \"%1\" compares \"%2\", which is not captured; trace it, too, or store the units' states "
                "(IncludeTrigger=on).")
                .arg(unit.name, capture.core.triggerBits[unit.inputs[missing]].name);
    return false;
  }
  const UnitOnSamples onSamples(capture, window, unit, bits);
  states.resize(window.samples);
  for (int i = 0; i < window.samples; ++i)
    states[i] = missing >= 0 ? capture.unitState(window.firstRow + i, number) : onSamples.holds(i);
  return true;
}

}  // namespace

bool findSamples(const Capture& capture, const QVector<PlanUnit>& units, const QString& expression,
                 const SearchRange& range, QVector<int>& samples, QString& error) {
  ParsedExpression parsed;
  QString reason;
  if (!parseTriggerExpression(expression, parsed, reason)) {
    error = QStringLiteral("The expression \"%1\" cannot be read: %2").arg(expression, reason);
    if (!error.endsWith(QLatin1Char('.'))) error += QLatin1Char('.');
    return false;
  }
  const CaptureWindow& window = capture.windows[range.window];
  QVector<QVector<bool>> states(parsed.units.size());
  for (int i = 0; i < parsed.units.size(); ++i) {
    const auto unit =
        std::find_if(units.begin(), units.end(), [&](const PlanUnit& one) { return one.name == parsed.units[i]; });
    if (unit == units.end()) {
      QStringList names;
      for (const PlanUnit& one : units) names += one.name;
      error = QStringLiteral("The core \"%1\" has no trigger unit \"%2\"; its units are: %3.")
                  .arg(capture.core.name, parsed.units[i], names.join(QLatin1String(", ")));
      return false;
    }
    if (!statesOf(capture, window, *unit, int(unit - units.begin()), states[i], error)) return false;
  }
  int step = 0, count = 0;
  const int last = qMin(window.samples - 1, window.trigger + range.to);
  for (int sample = qMax(0, window.trigger + range.from); sample <= last; ++sample) {
    int row = 0;
    for (int i = 0; i < states.size(); ++i) row |= int(states[i][sample]) << i;
    if (parsed.steps[step].truthTable[row] != '1' || ++count < parsed.steps[step].count) continue;
    count = 0;
    if (++step < parsed.steps.size()) continue;
    step = 0;
    samples += sample - window.trigger;
  }
  return true;
}

}  // namespace ost

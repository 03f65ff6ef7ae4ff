// Samples, units, sequences and windows, rule by rule.
#include "tests/sim/oracle/model.h"

#include <algorithm>

namespace oracle {

QByteArray binaryDigits(const QString& radix, const QString& digits, int width) {
  QByteArray bits;
  if (radix == "dec") {
    for (qulonglong value = digits.toULongLong(); value; value >>= 1) bits.prepend(value & 1 ? '1' : '0');
  } else {
    const int each = radix == "bin" ? 1 : radix == "oct" ? 3 : 4;
    for (QChar digit : digits)
      bits += digit == 'x' ? QByteArray(each, 'x')
                           : QByteArray::number(QString(digit).toInt(nullptr, 16), 2).rightJustified(each, '0');
  }
  return width ? bits.rightJustified(width, '0').right(width) : bits;
}

UnitStates::UnitStates(const Record& record, const QVector<Unit>& units) : record_(record) {
  for (const Unit& unit : units) {
    Compiled compiled;
    for (const QString& bit : unit.bits) compiled.columns += record.column(bit);
    compiled.op = unit.op;
    compiled.digits = binaryDigits(unit.radix, unit.digits, unit.op == ".SC." ? 0 : unit.bits.size());
    units_ += compiled;
  }
}

QVector<bool> UnitStates::next(int row) {
  history_ += row;
  QVector<bool> states;
  for (const Compiled& unit : units_) {
    auto level = [&](int ago, int bit) { return record_.rows[history_[history_.size() - 1 - ago]][unit.columns[bit]]; };
    bool state = false;
    if (unit.op == ".SC.") {
      const int length = unit.digits.size();
      state = history_.size() >= length;
      for (int i = 0; state && i < length; ++i)
        state = unit.digits[i] == 'x' || unit.digits[i] == level(length - 1 - i, 0);
    } else if (unit.op == ".RE." || unit.op == ".FE.") {
      const char after = unit.op == ".RE." ? '1' : '0', before = after == '1' ? '0' : '1';
      for (int i = 0; history_.size() > 1 && i < unit.columns.size(); ++i)
        state = state || (unit.digits[i] == '1' && level(0, i) == after && level(1, i) == before);
    } else if (unit.op == "==" || unit.op == "!=") {
      bool equal = true, differs = false;  // Neither, when it hangs on a bit that is not known.
      for (int i = 0; i < unit.columns.size(); ++i) {
        if (unit.digits[i] == 'x') continue;
        equal = equal && level(0, i) == unit.digits[i];
        differs = differs || level(0, i) == (unit.digits[i] == '1' ? '0' : '1');
      }
      state = unit.op == "==" ? equal : differs;
    } else {
      QByteArray now;
      for (int i = 0; i < unit.columns.size(); ++i) now += level(0, i);
      // Equally long binary numbers compare like texts.
      const bool known = now.count('0') + now.count('1') == now.size();
      const bool less = now < unit.digits, equal = now == unit.digits;
      state = known && (unit.op == "<"    ? less
                        : unit.op == "<=" ? less || equal
                        : unit.op == ">"  ? !less && !equal
                                          : !less);
    }
    states += state;
  }
  return states;
}

namespace {

/// One expression waiting for its steps.
class Sequence {
 public:
  explicit Sequence(const Expression& expression) : expression_(&expression) {}
  void restart() { step_ = met_ = 0; }
  bool fires(const QVector<bool>& units) {
    const Step& step = expression_->steps[step_];
    if (!step.term.holds(units) || ++met_ < step.count) return false;
    met_ = 0;
    step_ = (step_ + 1) % expression_->steps.size();
    return step_ == 0;
  }
  int step() const { return step_; }

 private:
  const Expression* expression_;
  int step_ = 0, met_ = 0;
};

}  // namespace

Expected expectedCapture(const Core& core, const RunChoice& choice, const Record& record, int armRow, int endRow,
                         int watchRow) {
  Expected expected;
  UnitStates states(record, choice.units);
  QVector<Sequence> sequences;
  for (int i = 0; i < core.expressions.size(); ++i)
    if (choice.enabled[i]) sequences.append(Sequence(core.expressions[i]));
  QVector<ExpectedSample> window;  ///< All samples since the window's first.
  int triggerIndex = -1, events = 0, samples = 0;
  const int rows = endRow < 0 ? record.rows.size() : std::min(endRow, int(record.rows.size()));
  for (int row = armRow; row < rows; ++row) {
    const auto isActive = [&](const QString& enable, bool isLow, int edges) {
      return enable.isEmpty() || record.is(isLow ? '0' : '1', std::max(row - edges, 0), enable);
    };
    const bool sampled = isActive(core.sampleEnable, core.sampleEnableLow, core.sampleEnableEdges);
    const bool looked = isActive(core.triggerEnable, core.triggerEnableLow, core.triggerEnableEdges);
    if (sampled) {
      ++samples;
      window.append({row, states.next(row)});
      if (triggerIndex < 0 && window.size() > choice.position && looked) {
        bool event = false;
        for (Sequence& sequence : sequences) event = sequence.fires(window.last().units) || event;
        if (event && ++events == choice.eventCount) {
          triggerIndex = window.size() - 1;
          expected.triggerRows += row;
        }
      }
      if (triggerIndex >= 0 && window.size() >= triggerIndex - choice.position + core.windowSamples) {
        expected.windows += window.mid(triggerIndex - choice.position);
        expected.rowsSeen = row + 1;
        expected.complete = expected.windows.size() == choice.windows;
        if (expected.complete) return expected;
        window.clear();
        triggerIndex = -1;
        events = 0;
        for (Sequence& sequence : sequences) sequence.restart();
      }
    }
    if (watchRow < 0 || row < watchRow) continue;
    expected.progress +=
        {samples > 0, triggerIndex < 0 && window.size() >= choice.position, triggerIndex >= 0, looked, events, {}};
    for (const Sequence& sequence : sequences) expected.progress.last().steps += sequence.step();
  }
  expected.rowsSeen = rows;
  return expected;
}

}  // namespace oracle

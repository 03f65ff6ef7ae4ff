// VCD: header with scopes, then only the changes.
#include "platform/reader/vcd_writer.h"

#include <algorithm>
#include <limits>

#include "platform/reader/vcd_scopes.h"

namespace ost {
namespace {

constexpr qint64 kUnknownPeriod = 1000000;  ///< Femtoseconds.

/// A variable with its identifier code and the value written last.
struct Written {
  const VcdVariable* variable = nullptr;
  QByteArray code, last;
};

/// Identifier codes count in the printable characters.
QByteArray codeOf(int number) {
  QByteArray code;
  do {
    code += static_cast<char>('!' + number % 94);
    number /= 94;
  } while (number > 0);
  return code;
}

void declare(const QByteArray& name, const VcdScope& scope, QVector<Written>& all, QByteArray& text) {
  text += "$scope module " + name + " $end\n";
  for (const VcdVariable& variable : scope.variables) {
    all.append({&variable, codeOf(all.size()), QByteArray()});
    text += (variable.isText ? "$var string " : "$var wire ") + QByteArray::number(variable.width) + ' ' +
            all.last().code + ' ' + variable.name + (variable.range.isEmpty() ? "" : " ") + variable.range + " $end\n";
  }
  for (auto child = scope.children.begin(); child != scope.children.end(); ++child)
    declare(child.key(), child.value(), all, text);
  text += "$upscope $end\n";
}

void change(Written& written, const QByteArray& value, QByteArray& text) {
  if (value == written.last) return;
  written.last = value;
  if (written.variable->isText)
    text += 's' + value + ' ' + written.code + '\n';
  else
    text += written.variable->width == 1 ? value + written.code + '\n' : 'b' + value + ' ' + written.code + '\n';
}

/// What changes at one time, ready to be written.
struct Event {
  qint64 time = 0;
  QByteArray text;
};

void addUnknown(QVector<Written*>& variables, qint64 time, QVector<Event>& events) {
  events.append({time, QByteArray()});
  for (Written* written : variables) change(*written, QByteArray(written->variable->width, 'x'), events.last().text);
}

/// All changes of one capture, from the time `start` of its first sample on; the last event is the end of its samples.
QVector<Event> eventsOf(const Capture& capture, QVector<Written*>& variables, qint64 start) {
  const QVector<qint64> times = sampleTimes(capture);
  QVector<Event> events;
  int sample = 0;
  qint64 end = start;
  for (int window = 0; window < capture.windows.size(); ++window) {
    const CaptureWindow& shown = capture.windows[window];
    for (int i = 0; i < shown.samples; ++i, ++sample) {
      const qint64 time = start + times[sample];
      // Windows that follow each other without a gap leave no time for an x, and no sample may move for it.
      if (i == 0 && sample > 0 && time > end) addUnknown(variables, end, events);
      events.append({time, QByteArray()});
      for (Written* written : variables)
        change(*written, written->variable->value(shown.firstRow + i, window), events.last().text);
      end = time + 1;
    }
  }
  events.append({end, QByteArray()});
  return events;
}

QByteArray unitOfTime(const Capture& capture, const ClockPeriod& period) {
  const QByteArray unit = capture.core.timestampBits ? "sample clock" : "sample";
  return "core " + vcdName(capture.core.name) +
         (period.isKnown() ? ", one " + unit + " takes " + period.text() : ", one unit of time is one " + unit);
}

}  // namespace

VcdClock::VcdClock(const QVector<Capture>& captures, const VcdStyle& style) : several_(captures.size() > 1) {
  bool isReal = false;
  for (const Capture& capture : captures) {
    const ClockPeriod period = style.periodOf(capture);
    isReal = isReal || period.isKnown();
    factors_[capture.core.name] = period.isKnown() ? period.femtoseconds : kUnknownPeriod;
  }
  // Never 10 or 100 of a unit: GTKWave's save files count in the units themselves.
  static const char* const kUnits[] = {"1 fs", "1 ps", "1 ns", "1 us", "1 ms"};
  const auto isDivisible = [](qint64 factor) { return factor % 1000 == 0; };
  int unit = 0;
  for (; unit < (isReal ? 4 : 2) && std::all_of(factors_.begin(), factors_.end(), isDivisible); ++unit)
    for (qint64& factor : factors_) factor /= 1000;
  timescale_ = kUnits[unit];
}

qint64 VcdClock::startOf(const Capture& capture) const {
  if (!several_ || capture.core.timestampBits == 0 || capture.windows.isEmpty()) return 0;
  return static_cast<qint64>(capture.timestamp(capture.windows[0].firstRow));
}

qint64 VcdClock::scaled(const Capture& capture, qint64 time) const {
  const qint64 most = std::numeric_limits<qint64>::max(), factor = factors_.value(capture.core.name, 1);
  return time > most / factor ? most : time * factor;
}

QByteArray capturesToVcd(const QVector<Capture>& captures, const QString& topModule, const VcdStyle& style) {
  const VcdClock clock(captures, style);
  const VcdLayout layout = layOutVcd(captures, topModule, style.singleBits);
  QByteArray text = "$version ost_capture $end\n";
  for (const Capture& capture : captures)
    text += "$comment " + unitOfTime(capture, style.periodOf(capture)) + " $end\n";
  text += "$timescale " + clock.timescale() + " $end\n";
  QVector<Written> variables;
  declare(layout.topName, layout.top, variables, text);
  declare(layout.ownName, layout.own, variables, text);
  text += "$enddefinitions $end\n";

  QVector<Event> events;
  for (int i = 0; i < captures.size(); ++i) {
    QVector<Written*> mine;
    for (Written& written : variables)
      if (written.variable->capture == i) mine += &written;
    QVector<Event> own = eventsOf(captures[i], mine, clock.startOf(captures[i]));
    if (captures.size() > 1) addUnknown(mine, own.takeLast().time, own);
    for (Event& event : own) event.time = clock.scaled(captures[i], event.time);
    events += own;
  }
  const auto isEarlier = [](const Event& one, const Event& other) { return one.time < other.time; };
  std::stable_sort(events.begin(), events.end(), isEarlier);
  qint64 time = -1;
  for (const Event& event : events) {
    if (event.time != time) text += '#' + QByteArray::number(event.time) + '\n';
    time = event.time;
    text += event.text;
  }
  return text;
}

}  // namespace ost

// Waveform and comma-separated text.
#include "platform/reader/text_views.h"

namespace ost {
namespace {

constexpr int kMostNameColumns = 34;
constexpr int kMostSampleColumns = 9;

/// The end of a long name tells more than its beginning.
QByteArray shortened(const QString& name, int columns) {
  const QByteArray text = name.toLatin1();
  return text.size() <= columns ? text : ".." + text.right(columns - 2);
}

struct View {
  int first = 0;  ///< Sample of the window.
  int samples = 0;
  int width = 100;  ///< Columns of the whole.
  int columns = 1;  ///< Of a sample.
  int nameColumns = 0;
};

View layOut(const Capture& capture, const CaptureWindow& window, int width) {
  View view;
  view.width = width;
  int digits = 0;
  for (const PlanProbe& probe : capture.core.probes) {
    view.nameColumns = qMax(view.nameColumns, qMin(probe.name.size(), kMostNameColumns));
    if (probe.positions.size() > 1)
      digits = qMax(digits, digitsOf(QByteArray(probe.positions.size(), '1'), capture.core.displayRadix).size());
    for (const EnumName& value : probe.names) digits = qMax(digits, value.name.size());
  }
  if (capture.core.includeTrigger)
    for (const PlanUnit& unit : capture.core.units)
      view.nameColumns = qMax(view.nameColumns, qMin(unit.name.size(), kMostNameColumns));
  view.columns = qMin(digits + 1, kMostSampleColumns);
  view.samples = qMin((width - view.nameColumns - 1) / view.columns, window.samples);
  view.first = qBound(0, window.trigger - view.samples / 3, window.samples - view.samples);
  return view;
}

/// Sample numbers counted from the trigger, and below them a mark at every labelled sample and at the trigger.
QByteArray scaleLines(const CaptureWindow& window, const View& view) {
  QByteArray labels(view.width, ' '), marks(view.width, ' ');
  const int step = qMax(1, 8 / view.columns);
  for (int i = 0; i < view.samples; ++i) {
    const int number = view.first + i - window.trigger;
    const int column = view.nameColumns + 1 + i * view.columns;
    if (number % step == 0) {
      const QByteArray label = QByteArray::number(number);
      if (column + label.size() <= view.width) labels.replace(column, label.size(), label);
      marks[column] = '|';
    }
    if (number == 0) marks[column] = 'T';
  }
  while (labels.endsWith(' ')) labels.chop(1);
  while (marks.endsWith(' ')) marks.chop(1);
  return labels + '\n' + marks + '\n';
}

QByteArray vectorLine(const Capture& capture, const CaptureWindow& window, const View& view, const PlanProbe& probe) {
  QByteArray line;
  for (int i = 0; i < view.samples;) {
    const int row = window.firstRow + view.first + i;
    const QByteArray bits = capture.probeBits(row, probe);
    int same = 1;
    while (i + same < view.samples && capture.probeBits(row + same, probe) == bits) ++same;
    const int room = same * view.columns - 1;
    QByteArray digits = valueText(probe, bits, capture.core.displayRadix);
    if (digits.size() > room) digits = room >= 3 ? digits.left(room - 2) + ".." : QByteArray(room, '.');
    line += '|' + digits.leftJustified(room, ' ');
    i += same;
  }
  return line;
}

template <typename Level>
QByteArray bitLine(const CaptureWindow& window, const View& view, Level level) {
  QByteArray line;
  for (int i = 0; i < view.samples; ++i)
    line += QByteArray(view.columns, level(window.firstRow + view.first + i) ? '~' : '_');
  return line;
}

QByteArray quoted(QByteArray bytes) {
  if (!bytes.contains(',') && !bytes.contains('"') && !bytes.contains('\n')) return bytes;
  return '"' + bytes.replace("\"", "\"\"") + '"';
}

}  // namespace

QByteArray captureToWave(const Capture& capture, int columns) {
  QByteArray text;
  for (int number = 0; number < capture.windows.size(); ++number) {
    const CaptureWindow& window = capture.windows[number];
    const View view = layOut(capture, window, columns);
    if (capture.windows.size() > 1)
      text += (number ? "\nwindow " : "window ") + QByteArray::number(number + 1) + " of " +
              QByteArray::number(capture.windows.size()) + '\n';
    text += scaleLines(window, view);
    auto addLine = [&](const QString& name, const QByteArray& levels) {
      text += shortened(name, view.nameColumns).leftJustified(view.nameColumns, ' ') + ' ' + levels + '\n';
    };
    for (const PlanProbe& probe : capture.core.probes) {
      if (probe.positions.isEmpty()) continue;
      const int bit = probe.positions[0];
      addLine(probe.name, probe.positions.size() > 1 || !probe.names.isEmpty()
                              ? vectorLine(capture, window, view, probe)
                              : bitLine(window, view, [&](int row) { return capture.probeBit(row, bit); }));
    }
    for (int i = 0; capture.core.includeTrigger && i < capture.core.units.size(); ++i)
      addLine(capture.core.units[i].name, bitLine(window, view, [&](int row) { return capture.unitState(row, i); }));
  }
  return text;
}

QByteArray captureToCsv(const Capture& capture) {
  const PlanCore& core = capture.core;
  QByteArray text = "window,sample";
  if (core.timestampBits) text += ",timestamp";
  for (const PlanProbe& probe : core.probes) text += ',' + quoted(probe.name.toLatin1());
  for (int i = 0; core.includeTrigger && i < core.units.size(); ++i)
    text += ',' + quoted(core.units[i].name.toLatin1());
  text += '\n';
  for (int number = 0; number < capture.windows.size(); ++number) {
    const CaptureWindow& window = capture.windows[number];
    for (int i = 0; i < window.samples; ++i) {
      const int row = window.firstRow + i;
      text += QByteArray::number(number) + ',' + QByteArray::number(i - window.trigger);
      if (core.timestampBits) text += ',' + QByteArray::number(capture.timestamp(row));
      for (const PlanProbe& probe : core.probes)
        text += ',' + quoted(valueText(probe, capture.probeBits(row, probe), core.displayRadix));
      for (int u = 0; core.includeTrigger && u < core.units.size(); ++u)
        text += capture.unitState(row, u) ? ",1" : ",0";
      text += '\n';
    }
  }
  return text;
}

}  // namespace ost

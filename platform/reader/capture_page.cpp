// The data of the page; what it does with them is in capture_page.html.
#include "platform/reader/capture_page.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <functional>

#include "platform/text/byte_text.h"
#include "platform/trigger/unit_value.h"

namespace ost {

extern const char kCapturePage[];  ///< capture_page.html, embedded by the build.

namespace {

/// Sample number and value in turn, for each sample at which the value differs from the one before.
QJsonArray changesOf(const Capture& capture, const std::function<QByteArray(int row)>& bitsOf) {
  QJsonArray changes;
  QByteArray last;
  int sample = 0;
  for (const CaptureWindow& window : capture.windows) {
    for (int i = 0; i < window.samples; ++i, ++sample) {
      const QByteArray bits = bitsOf(window.firstRow + i);
      if (bits == last) continue;
      changes.append(sample);
      changes.append(QString::fromLatin1(digitsOf(bits, Radix::Hex)));
      last = bits;
    }
  }
  return changes;
}

QJsonObject signalOf(const Capture& capture, const PlanProbe& probe) {
  QJsonObject signal{{QStringLiteral("name"), unicodeFromText(probe.name)},
                     {QStringLiteral("width"), probe.positions.size()}};
  QJsonObject names;
  for (const EnumName& name : probe.names) {
    QByteArray bits = name.bits;
    std::reverse(bits.begin(), bits.end());
    names.insert(QString::fromLatin1(digitsOf(bits, Radix::Hex)), unicodeFromText(name.name));
  }
  if (!names.isEmpty()) signal.insert(QStringLiteral("names"), names);
  signal.insert(QStringLiteral("changes"), changesOf(capture, [&](int row) { return capture.probeBits(row, probe); }));
  return signal;
}

QJsonArray signalsOf(const Capture& capture) {
  QJsonArray list;
  for (const PlanProbe& probe : capture.core.probes)
    if (!probe.positions.isEmpty()) list.append(signalOf(capture, probe));
  for (int i = 0; capture.core.includeTrigger && i < capture.core.units.size(); ++i) {
    const auto state = [&](int row) { return QByteArray(1, capture.unitState(row, i) ? '1' : '0'); };
    list.append(
        QJsonObject{{QStringLiteral("name"), QStringLiteral("unit_") + unicodeFromText(capture.core.units[i].name)},
                    {QStringLiteral("width"), 1},
                    {QStringLiteral("changes"), changesOf(capture, state)}});
  }
  return list;
}

}  // namespace

QByteArray captureToPage(const Capture& capture, const QString& topModule, const ClockPeriod& period) {
  QJsonArray windows, distances;
  int first = 0;
  for (const CaptureWindow& window : capture.windows) {
    windows.append(QJsonObject{{QStringLiteral("first"), first},
                               {QStringLiteral("samples"), window.samples},
                               {QStringLiteral("trigger"), window.trigger}});
    first += window.samples;
  }
  qint64 before = 0;
  for (const qint64 time : sampleTimes(capture)) {
    distances.append(double(time - before));
    before = time;
  }
  const QJsonObject data{
      {QStringLiteral("design"), unicodeFromText(topModule)},
      {QStringLiteral("core"), unicodeFromText(capture.core.name)},
      {QStringLiteral("radix"), radixText(capture.core.displayRadix)},
      {QStringLiteral("period"), double(period.femtoseconds)},
      {QStringLiteral("unit"), capture.core.timestampBits ? QStringLiteral("clock") : QStringLiteral("sample")},
      {QStringLiteral("windows"), windows},
      {QStringLiteral("distances"), distances},
      {QStringLiteral("signals"), signalsOf(capture)}};
  // No name may end the element that holds the data.
  const QByteArray json = QJsonDocument(data).toJson(QJsonDocument::Compact).replace('<', "\\u003c");
  return QByteArray(kCapturePage).replace("@DATA@", json);
}

}  // namespace ost

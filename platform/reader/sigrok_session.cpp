// A session: metadata, and the samples in files of a few MB.
#include "platform/reader/sigrok_session.h"

#include <functional>

#include "platform/reader/zip_archive.h"

namespace ost {
namespace {

constexpr int kChunkBytes = 4 << 20;  ///< Of samples in one file.

struct Channel {
  QByteArray name;
  std::function<bool(int row, int window)> level;
};

/// Names are values in a settings file, where a backslash escapes.
QByteArray channelName(const QString& text) {
  QByteArray name = text.toLatin1();
  for (char& c : name)
    if (uchar(c) < ' ' || c == 127) c = '_';
  return name.replace('\\', "\\\\");
}

QVector<Channel> channelsOf(const Capture& capture) {
  QVector<Channel> channels;
  QVector<bool> isTaken(capture.core.probeWidth(), false);
  for (const PlanProbe& probe : capture.core.probes) {
    for (const int position : probe.positions) {
      if (isTaken[position]) continue;
      isTaken[position] = true;
      channels.append({channelName(capture.core.probeBits[position].name),
                       [&capture, position](int row, int) { return capture.probeBit(row, position); }});
    }
  }
  channels.append({"trigger", [&capture](int row, int window) {
                     return row - capture.windows[window].firstRow == capture.windows[window].trigger;
                   }});
  if (capture.windows.size() > 1) channels.append({"window", [](int, int window) { return window % 2 == 1; }});
  for (int i = 0; capture.core.includeTrigger && i < capture.core.units.size(); ++i)
    channels.append({"unit_" + channelName(capture.core.units[i].name),
                     [&capture, i](int row, int) { return capture.unitState(row, i); }});
  return channels;
}

QByteArray samplesOf(const Capture& capture, const QVector<Channel>& channels, int unitSize) {
  QByteArray samples;
  for (int window = 0; window < capture.windows.size(); ++window) {
    const CaptureWindow& shown = capture.windows[window];
    for (int row = shown.firstRow; row < shown.firstRow + shown.samples; ++row) {
      QByteArray sample(unitSize, 0);
      for (int i = 0; i < channels.size(); ++i)
        if (channels[i].level(row, window)) sample[i / 8] = static_cast<char>(sample[i / 8] | 1 << i % 8);
      samples += sample;
    }
  }
  return samples;
}

}  // namespace

QByteArray captureToSigrok(const Capture& capture, const ClockPeriod& period) {
  const QVector<Channel> channels = channelsOf(capture);
  const int unitSize = (channels.size() + 7) / 8;
  const qint64 rate = period.isKnown() ? qMax<qint64>(1, qRound64(period.hertz())) : 1000000;
  QByteArray metadata = "[global]\nsigrok version=0.5.2\n\n[device 1]\ncapturefile=logic-1\ntotal probes=" +
                        QByteArray::number(channels.size()) + "\nsamplerate=" + QByteArray::number(rate) +
                        " Hz\ntotal analog=0\n";
  for (int i = 0; i < channels.size(); ++i)
    metadata += "probe" + QByteArray::number(i + 1) + '=' + channels[i].name + '\n';
  metadata += "unitsize=" + QByteArray::number(unitSize) + '\n';
  QList<QPair<QByteArray, QByteArray>> files = {{"version", "2"}, {"metadata", metadata}};
  const QByteArray samples = samplesOf(capture, channels, unitSize);
  const int chunk = kChunkBytes / unitSize * unitSize;
  for (int at = 0; at < samples.size(); at += chunk)
    files.append({"logic-1-" + QByteArray::number(at / chunk + 1), samples.mid(at, chunk)});
  return zipArchive(files);
}

}  // namespace ost

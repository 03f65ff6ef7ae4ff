// One file for all cores, or one a core; marked by the core and by the number of the capture.
#include "platform/reader/capture_files.h"

#include "platform/reader/capture_page.h"
#include "platform/reader/gtkwave_view.h"
#include "platform/reader/sigrok_session.h"
#include "platform/reader/text_views.h"

namespace ost {
namespace {

OutputFile numbered(const OutputFile& file, int number) {
  return number ? file.marked(QString::number(number)) : file;
}

OutputFile ofCore(const OutputFile& file, const QString& core, int cores, int number) {
  return numbered(cores > 1 ? file.marked(core) : file, number);
}

}  // namespace

QList<OutputText> captureFiles(const CaptureOptions& options, const QVector<Capture>& captures,
                               const QString& topModule, int number) {
  QList<OutputText> files;
  const OutputFile vcd = numbered(options.vcd, number);
  if (vcd.isAsked()) files.append({vcd, capturesToVcd(captures, topModule, options.vcdStyle)});
  if (options.gtkw.isAsked())
    files += gtkwaveView(captures, topModule, options.vcdStyle, vcd, numbered(options.gtkw, number));
  const ClockPeriod& period = options.vcdStyle.period;
  for (const Capture& capture : captures) {
    const auto add = [&](const OutputFile& file, const auto& text) {
      if (file.isAsked()) files.append({ofCore(file, capture.core.name, captures.size(), number), text()});
    };
    add(options.csv, [&] { return captureToCsv(capture); });
    add(options.sigrok, [&] { return captureToSigrok(capture, period); });
    add(options.html, [&] { return captureToPage(capture, topModule, period); });
  }
  return files;
}

bool checkCaptureFiles(const CaptureOptions& options, const QStringList& cores, QString& error) {
  const int number = options.repeats == 1 ? 0 : 1;
  for (const AskedFile& asked : askedFiles(options)) {
    if (!asked.forEachCore && !numbered(asked.file, number).check(error)) return false;
    for (const QString& core : cores)
      if (asked.forEachCore && !ofCore(asked.file, core, cores.size(), number).check(error)) return false;
  }
  return true;
}

}  // namespace ost

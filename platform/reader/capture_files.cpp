// Which files there are, and what is in each.
#include "platform/reader/capture_files.h"

#include <QSet>

#include "platform/reader/asked_files.h"
#include "platform/reader/capture_page.h"
#include "platform/reader/gtkwave_view.h"
#include "platform/reader/json_writer.h"
#include "platform/reader/replay_bench.h"
#include "platform/reader/sigrok_session.h"
#include "platform/reader/text_views.h"

namespace ost {
namespace {

struct PlannedFile {
  FileForm form;
  OutputFile file;
  int core = -1;  ///< Whose it is; -1: of all.
};

/// The file of a core is marked with its name, and with a number where two would be the same.
QList<PlannedFile> plannedFiles(const CaptureOptions& options, const QStringList& cores, int number) {
  const auto marked = [&](const OutputFile& file) { return number ? file.marked(QString::number(number)) : file; };
  QList<PlannedFile> planned;
  for (const AskedFile& asked : askedFiles(options)) {
    if (!asked.forEachCore) planned.append({asked.form, marked(asked.file), -1});
    QSet<QString> used;
    for (int core = 0; asked.forEachCore && core < cores.size(); ++core) {
      OutputFile file = asked.file;
      for (int i = 1; options.allCores && (i == 1 || used.contains(file.name)); ++i)
        file = asked.file.marked(cores[core] + (i > 1 ? QString::number(i) : QString()));
      used += file.name;
      planned.append({asked.form, marked(file), core});
    }
  }
  return planned;
}

}  // namespace

QList<OutputText> captureFiles(const CaptureOptions& options, const CaptureSet& set, int number) {
  const QVector<Capture>& captures = set.cores;
  const QString& topModule = set.topModule;
  QStringList cores;
  for (const Capture& capture : captures) cores += capture.core.name;
  const auto periodOf = [&](int core) { return options.vcdStyle.periodOf(captures[core]); };
  QList<OutputText> files;
  OutputFile vcd;
  for (const PlannedFile& planned : plannedFiles(options, cores, number)) {
    const OutputFile& file = planned.file;
    switch (planned.form) {
      case FileForm::Vcd:
        vcd = file;
        files.append({file, capturesToVcd(captures, topModule, options.vcdStyle)});
        break;
      case FileForm::GtkwaveView:
        files += gtkwaveView(captures, topModule, options.vcdStyle, vcd, file);
        break;
      case FileForm::Csv:
        files.append({file, captureToCsv(captures[planned.core])});
        break;
      case FileForm::SigrokSession:
        files.append({file, captureToSigrok(captures[planned.core], periodOf(planned.core))});
        break;
      case FileForm::Page:
        files.append({file, captureToPage(captures[planned.core], topModule, periodOf(planned.core))});
        break;
      case FileForm::Json:
        files.append({file, capturesToJson(set, options.vcdStyle)});
        break;
      case FileForm::Replay:
        for (const Capture& capture : captures) {
          const ProbedInstance* const instance = probedInstance(capture.core, options.replay);
          if (!instance) continue;
          files.append({file, replayBench(capture, *instance, options.window)});
          break;
        }
        break;
    }
  }
  return files;
}

bool checkCaptureFiles(const CaptureOptions& options, const QStringList& cores, QString& error) {
  for (const PlannedFile& planned : plannedFiles(options, cores, options.repeats == 1 ? 0 : 1))
    if (!planned.file.check(error)) return false;
  return true;
}

}  // namespace ost

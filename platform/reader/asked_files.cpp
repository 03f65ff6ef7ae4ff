// The forms of files, their options, and what cannot be asked for together.
#include "platform/reader/asked_files.h"

#include "platform/text/byte_text.h"
#include "platform/text/names.h"

namespace ost {
namespace {

struct FileKind {
  FileForm form;
  const char* option;
  OutputFile CaptureOptions::*file;
  bool forEachCore;
};
const FileKind kFiles[] = {
    {FileForm::Vcd, "-vcd", &CaptureOptions::vcd, false},
    {FileForm::GtkwaveView, "-gtkw", &CaptureOptions::gtkw, false},
    {FileForm::Csv, "-csv", &CaptureOptions::csv, true},
    {FileForm::SigrokSession, "-sr", &CaptureOptions::sigrok, true},
    {FileForm::Page, "-html", &CaptureOptions::html, true},
    {FileForm::Json, "-json", &CaptureOptions::json, false},
    {FileForm::Replay, "-out", &CaptureOptions::replayFile, false},
};

}  // namespace

QString conflictOf(const CaptureOptions& options) {
  const QVector<AskedFile> files = askedFiles(options);
  for (int i = 0; i < files.size(); ++i) {
    const QLatin1String option(files[i].option);
    for (int j = 0; j < i; ++j)
      if (files[i].file.name == files[j].file.name)
        return QStringLiteral("\"%1\" and \"%2\" name the same file; give each its own.")
            .arg(QLatin1String(files[j].option), option);
    if (files[i].file.isStandardOutput() && options.wave)
      return QStringLiteral("The waveform of \"-wave\" and a file \"-\" both want the standard output; leave one out.");
    if (files[i].file.isStandardOutput() && options.allCores && files[i].forEachCore)
      return QStringLiteral("With \"-all\" each core has a file of its own; give \"%1\" a name.").arg(option);
  }
  if (options.replay.isEmpty() == options.replayFile.isAsked())
    return QStringLiteral("\"-replay\" names an instance and \"-out\" the file for its test bench; give both.");
  if (!options.gtkw.isAsked()) return QString();
  for (const OutputFile& file : {options.vcd, options.gtkw}) {
    if (!file.isAsked() || file.isStandardOutput())
      return QStringLiteral("\"-gtkw\" is for the file of \"-vcd\"; give both, and names to both.");
    if (oneLine(file.name) != file.name || file.name.contains(QLatin1Char('"')))
      return QStringLiteral(
                 "With \"-gtkw\" the names of files have neither quotes nor control characters; "
                 "give %1 another name.")
          .arg(quoted(file.name));
  }
  return QString();
}

QVector<AskedFile> askedFiles(const CaptureOptions& options) {
  QVector<AskedFile> files;
  for (const FileKind& kind : kFiles)
    if ((options.*kind.file).isAsked()) files.append({kind.form, kind.option, options.*kind.file, kind.forEachCore});
  return files;
}

bool askForFile(const QString& name, CaptureOptions& options, QString& error) {
  QStringList ends;
  for (const FileKind& kind : kFiles) {
    if (kind.form == FileForm::Replay) continue;
    const QString end = QLatin1Char('.') + QLatin1String(kind.option + 1);
    ends += end;
    if (!name.endsWith(end)) continue;
    (options.*kind.file).name = name;
    if (kind.form == FileForm::GtkwaveView)
      options.vcd.name = name.left(name.size() - end.size()) + QLatin1String(".vcd");
    error = conflictOf(options);
    return error.isEmpty();
  }
  error = QStringLiteral("The form of \"%1\" is not known by its name; it must end in one of %2.")
              .arg(name, ends.join(QLatin1String(", ")));
  return false;
}

}  // namespace ost

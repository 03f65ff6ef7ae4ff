// A new format is a value of CaptureFormat and a row here.
#include "platform/reader/capture_formats.h"

#include <QSet>

#include "platform/reader/json_writer.h"
#include "platform/reader/text_views.h"
#include "platform/reader/vcd_writer.h"

namespace ost {
namespace {

struct Format {
  const char* word;
  bool eachCore;  ///< `text` gets a set of one core.
  QByteArray (*text)(const CaptureSet& set);
};

const Format kFormats[kCaptureFormats] = {
    {"vcd", false, [](const CaptureSet& set) { return capturesToVcd(set.cores, set.topModule); }},
    {"csv", true, [](const CaptureSet& set) { return captureToCsv(set.cores[0]); }},
    {"json", false, capturesToJson},
};

const Format& rowOf(CaptureFormat format) {
  return kFormats[static_cast<int>(format)];
}

}  // namespace

const char* formatWord(CaptureFormat format) {
  return rowOf(format).word;
}

bool formatOfFile(const QString& name, CaptureFormat& format, QString& error) {
  QStringList ends;
  for (int i = 0; i < kCaptureFormats; ++i) {
    ends += QLatin1Char('.') + QLatin1String(kFormats[i].word);
    format = static_cast<CaptureFormat>(i);
    if (name.endsWith(ends.last(), Qt::CaseInsensitive)) return true;
  }
  error = QStringLiteral("The format of \"%1\" is not known by its name; it must end in one of %2.")
              .arg(name, ends.join(QLatin1String(", ")));
  return false;
}

bool isEachCores(CaptureFormat format) {
  return rowOf(format).eachCore;
}

QList<OutputFile> filesFor(const AskedFile& asked, const QStringList& coreNames, bool marksCores) {
  if (!isEachCores(asked.format) || !marksCores) return {asked.file};
  QList<OutputFile> files;
  QSet<QString> used;
  for (const QString& core : coreNames) {
    OutputFile file = asked.file.marked(core);
    for (int i = 2; used.contains(file.name); ++i) file = asked.file.marked(core + QString::number(i));
    used += file.name;
    files += file;
  }
  return files;
}

QList<OutputText> textsFor(CaptureFormat format, const QList<OutputFile>& files, const CaptureSet& shown) {
  const Format& row = rowOf(format);
  QList<OutputText> texts;
  for (int i = 0; i < files.size(); ++i) {
    CaptureSet part = shown;
    if (row.eachCore) part.cores = {shown.cores[i]};
    texts.append({files[i], row.text(part)});
  }
  return texts;
}

}  // namespace ost

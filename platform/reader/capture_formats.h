// The files that a capture can be written to, one format in each row of a table.
#pragma once

#include "platform/reader/capture.h"
#include "platform/reader/output_files.h"

namespace ost {

/// Position in the table.
enum class CaptureFormat { Vcd, Csv, Json };
constexpr int kCaptureFormats = 3;

/// A file that is asked for.
struct AskedFile {
  CaptureFormat format = CaptureFormat::Vcd;
  OutputFile file;
};

/// "csv": the end of a file's name, and behind "-" the option of the program.
const char* formatWord(CaptureFormat format);
/// The format for the end of the file's name. False with `error` that lists them.
bool formatOfFile(const QString& name, CaptureFormat& format, QString& error);
/// Whether each core has a file of its own.
bool isEachCores(CaptureFormat format);

/// The files that become of `asked`: itself, or one for each core with its name as a mark.
QList<OutputFile> filesFor(const AskedFile& asked, const QStringList& coreNames, bool marksCores);

/// What `asked` becomes, with `files` of filesFor().
QList<OutputText> textsFor(CaptureFormat format, const QList<OutputFile>& files, const CaptureSet& shown);

}  // namespace ost

// The files that a command line asks for.
#pragma once

#include <QString>
#include <QVector>

#include "platform/reader/capture_options.h"

namespace ost {

enum class FileForm { Vcd, GtkwaveView, Csv, SigrokSession, Page, Json, Replay };

/// A file that was asked for.
struct AskedFile {
  FileForm form;
  const char* option;
  OutputFile file;
  bool forEachCore;  ///< With several cores there is one a core.
};
/// Those of the command line, in the order in which they are written.
QVector<AskedFile> askedFiles(const CaptureOptions& options);
/// Asks for a file in the form that the end of its name stands for ("x.csv": that of "-csv"); with one for GTKWave also
/// for the dump "x.vcd" beside it. False with `error`.
bool askForFile(const QString& name, CaptureOptions& options, QString& error);

/// What cannot be asked for together, as a text; empty when all files can be written.
QString conflictOf(const CaptureOptions& options);

}  // namespace ost

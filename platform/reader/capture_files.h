// The files of one capture, each in its form.
#pragma once

#include "platform/reader/capture_options.h"

namespace ost {

/// What is to be stored for these captures, one a core. With `number` other than 0 it is marked with that.
QList<OutputText> captureFiles(const CaptureOptions& options, const CaptureSet& set, int number);

/// False with `error` when a file of the captures cannot be written now.
bool checkCaptureFiles(const CaptureOptions& options, const QStringList& cores, QString& error);

}  // namespace ost

// A capture as JSON, for programs (the schema is in docs/ost_capture.md).
#pragma once

#include <QByteArray>

#include "platform/reader/vcd_writer.h"

namespace ost {

/// Version of the schema: it grows when something is no longer where it was.
constexpr int kCaptureJsonVersion = 1;

/// One object; values are numbers without a limit of width.
QByteArray capturesToJson(const CaptureSet& set, const VcdStyle& style = {});

}  // namespace ost

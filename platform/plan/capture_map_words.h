// Words that the capture map's writer and reader share.
#pragma once

#include <QStringList>

namespace ost {

/// Version 2 names values of enumerated types, version 3 the way to the chip when that is not four pins, version 4
/// tells how the nets of probes are declared, version 5 has a Wishbone master or a serdes core. A map without such is written as the version before, so that readers of
/// that one take it, and its hash is theirs.
constexpr int kCaptureMapVersion = 5;
QString captureMapFormat();
QStringList unitClassWords();  ///< By UnitClass.

}  // namespace ost

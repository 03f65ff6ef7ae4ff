// Words that the capture map's writer and reader share.
#pragma once

#include <QStringList>

namespace ost {

/// Version 2 names values of enumerated types; a map without such is written as version 1, so that readers of that one
/// take it, and its hash is theirs. Version 3 also tells how the nets of probes are declared.
constexpr int kCaptureMapVersion = 3;
QString captureMapFormat();
QStringList unitClassWords();  ///< By UnitClass.

}  // namespace ost

// Words that the capture map's writer and reader share.
#pragma once

#include <QStringList>

namespace ost {

QString captureMapFormat();
QStringList unitClassWords();  ///< By UnitClass.

}  // namespace ost

// What Qt's JSON parser does not check: it takes the last of several equal keys, silently, leaks the others, and lets
// some texts pass that are no JSON.
#pragma once

#include <QByteArray>
#include <QString>

namespace ost {

/// False for text that is no JSON or has a key twice in one object, with the offset of the fault and what it is.
bool checkJson(const QByteArray& json, int& offset, QString& fault);

}  // namespace ost

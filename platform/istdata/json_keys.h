// Finds a key that stands twice in an object. Qt's parser takes the last of them, silently, and leaks the others.
#pragma once

#include <QByteArray>

#include "framework/ist_data.h"

namespace ost {

/// Offset behind the first repeated key, which `key` gets; -1 when there is none before the first syntax error.
ISTDATA_API int findRepeatedKey(const QByteArray& json, QByteArray& key);

}  // namespace ost

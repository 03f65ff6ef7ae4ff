// JSON text to Qt's values, strictly. Qt's own parser takes the last of several equal keys, silently, leaks the others,
// and lets some texts pass that are no JSON.
#pragma once

#include <QByteArray>
#include <QJsonValue>
#include <QString>

namespace ost {

constexpr int kMaxJsonNesting = 1024;  ///< Nesting depth of lists and objects.

/// What is wrong with a text, and where: line and column count from 1, the column in bytes.
struct JsonTextFault {
  int line = 0, column = 0;
  QString text;
};

/// The value that the text holds. False for text that is not JSON, is not UTF-8, has a key twice in one object or is
/// nested too deep.
bool parseJson(const QByteArray& json, QJsonValue& value, JsonTextFault& fault);

}  // namespace ost

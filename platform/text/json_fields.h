// Reads the members of a JSON object strictly: every key must be known and of its kind. The first fault is kept with
// the path at which it was found; later reads then return neutral values.
#pragma once

#include <QJsonObject>
#include <QJsonValue>
#include <QSet>
#include <QString>
#include <QStringList>

namespace ost {

/// What the readers of a document's parts share: its manner, and the first fault in it.
struct JsonFault {
  QString text;
  bool underscoredKeys = false;  ///< The document writes "bufferDepth" as "buffer_depth".
  bool none() const { return text.isEmpty(); }
};

class JsonFields {
 public:
  JsonFields(const QJsonValue& value, const QString& path, JsonFault& fault);

  /// Byte text.
  QString text(const char* key);
  bool flag(const char* key);
  int number(const char* key, int least, int most);
  /// The position of the text among `words`.
  int word(const char* key, const QStringList& words);
  QJsonArray list(const char* key);
  bool has(const char* key) const { return object_.contains(spelled(key)); }
  QJsonValue value(const char* key);

  QString pathOf(const char* key) const;
  void fail(const QString& path, const QString& what);
  /// Call last: reports a key that has not been read.
  void refuseOthers();

 private:
  /// The key as it is written in the document.
  QString spelled(const char* key) const;

  QJsonObject object_;
  QString path_;
  JsonFault& fault_;
  QSet<QString> read_;
};

/// "a number", "an object", ... for error texts.
QString jsonKind(const QJsonValue& value);

}  // namespace ost

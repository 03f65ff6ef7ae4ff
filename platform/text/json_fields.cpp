// Strict reading of JSON objects.
#include "platform/text/json_fields.h"

#include <QJsonArray>
#include <cmath>

#include "platform/text/byte_text.h"
#include "platform/text/names.h"

namespace ost {

QString jsonKind(const QJsonValue& value) {
  switch (value.type()) {
    case QJsonValue::Null:
      return "null";
    case QJsonValue::Bool:
      return "true or false";
    case QJsonValue::Double:
      return "a number";
    case QJsonValue::String:
      return "a text";
    case QJsonValue::Array:
      return "a list";
    case QJsonValue::Object:
      return "an object";
    case QJsonValue::Undefined:
      break;
  }
  return "nothing";
}

JsonFields::JsonFields(const QJsonValue& value, const QString& path, JsonFault& fault)
    : object_(value.toObject()), path_(path), fault_(fault) {
  if (!value.isObject()) fail(path, "expected an object, found " + jsonKind(value) + ".");
}

QString JsonFields::spelled(const char* key) const {
  if (!fault_.underscoredKeys) return QLatin1String(key);
  QString name;
  for (; *key; ++key) {
    const QChar c = QLatin1Char(*key);
    if (c.isUpper()) name += '_';
    name += c.toLower();
  }
  return name;
}

QString JsonFields::pathOf(const char* key) const {
  return path_.isEmpty() ? spelled(key) : path_ + '.' + spelled(key);
}

void JsonFields::fail(const QString& path, const QString& what) {
  if (fault_.none()) fault_.text = path.isEmpty() ? what : path + ": " + what;
}

QJsonValue JsonFields::value(const char* key) {
  const QString name = spelled(key);
  read_.insert(name);
  if (!object_.contains(name)) fail(pathOf(key), "is missing.");
  return object_.value(name);
}

QString JsonFields::text(const char* key) {
  const QJsonValue found = value(key);
  if (!found.isString()) {
    fail(pathOf(key), "expected a text, found " + jsonKind(found) + ".");
    return QString();
  }
  const QString bytes = textFromUnicode(found.toString());
  if (bytes.contains(QChar(0))) fail(pathOf(key), "holds a null character.");
  return bytes;
}

bool JsonFields::flag(const char* key) {
  const QJsonValue found = value(key);
  if (!found.isBool()) fail(pathOf(key), "expected true or false, found " + jsonKind(found) + ".");
  return found.toBool();
}

int JsonFields::number(const char* key, int least, int most) {
  const QJsonValue found = value(key);
  const double number = found.toDouble();
  if (found.isDouble() && number == std::floor(number) && number >= least && number <= most) return int(number);
  const QString what = found.isDouble() ? QString::number(number, 'g', 15) : jsonKind(found);
  fail(pathOf(key), QString("expected a whole number from %1 to %2, found %3.").arg(least).arg(most).arg(what));
  return least;
}

int JsonFields::word(const char* key, const QStringList& words) {
  const QString found = text(key);
  const int index = words.indexOf(found);
  if (index < 0) fail(pathOf(key), QString("expected %1, found %2.").arg(words.join(" or "), quoted(found)));
  return index < 0 ? 0 : index;
}

QJsonArray JsonFields::list(const char* key) {
  const QJsonValue found = value(key);
  if (!found.isArray()) fail(pathOf(key), "expected a list, found " + jsonKind(found) + ".");
  return found.toArray();
}

void JsonFields::refuseOthers() {
  for (auto it = object_.begin(); it != object_.end(); ++it)
    if (!read_.contains(it.key()))
      fail(path_, QString("has an unknown key %1.").arg(quoted(textFromUnicode(it.key()))));
}

}  // namespace ost

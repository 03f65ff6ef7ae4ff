// Builds Qt's values while RapidJSON walks over the text.
#include "platform/text/json_text.h"

#include <rapidjson/error/en.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>

#include <QJsonArray>
#include <QJsonObject>
#include <vector>

#include "platform/text/byte_text.h"
#include "platform/text/json_memory.h"
#include "platform/text/names.h"

namespace ost {

namespace {

/// Takes the parser's events; false ends the parsing with `fault`.
class Builder {
 public:
  bool Null() { return add(QJsonValue()); }
  bool Bool(bool value) { return add(value); }
  bool Int(int value) { return add(value); }
  bool Uint(unsigned value) { return add(double(value)); }
  bool Int64(int64_t value) { return add(double(value)); }
  bool Uint64(uint64_t value) { return add(double(value)); }
  bool Double(double value) { return add(value); }
  bool RawNumber(const char*, rapidjson::SizeType, bool) { return false; }  // never called: not enabled
  bool String(const char* text, rapidjson::SizeType length, bool) { return add(QString::fromUtf8(text, int(length))); }
  bool StartObject() { return open(); }
  bool StartArray() { return open(); }
  bool EndObject(rapidjson::SizeType) { return closeWith(QJsonValue(open_.back().object)); }
  bool EndArray(rapidjson::SizeType) { return closeWith(QJsonValue(open_.back().array)); }
  bool Key(const char* text, rapidjson::SizeType length, bool) {
    Level& level = open_.back();
    level.isObject = true;
    level.key = QString::fromUtf8(text, int(length));
    if (!level.object.contains(level.key)) return true;
    fault = QString("the key %1 stands twice").arg(quoted(textFromUnicode(level.key)));
    return false;
  }

  QJsonValue root;
  QString fault;

 private:
  struct Level {
    bool isObject = false;  ///< Known from the first key on.
    QString key;
    QJsonObject object;
    QJsonArray array;
  };

  bool open() {
    open_.emplace_back();
    if (open_.size() <= size_t(kMaxJsonNesting)) return true;
    fault = QString("it is nested deeper than %1 levels").arg(kMaxJsonNesting);
    return false;
  }
  bool closeWith(const QJsonValue& value) {
    open_.pop_back();
    return add(value);
  }
  bool add(const QJsonValue& value) {
    if (open_.empty())
      root = value;
    else if (open_.back().isObject)
      open_.back().object.insert(open_.back().key, value);
    else
      open_.back().array.append(value);
    return true;
  }

  std::vector<Level> open_;
};

}  // namespace

bool parseJson(const QByteArray& json, QJsonValue& value, JsonTextFault& fault) {
  const int mark = json.startsWith("\xef\xbb\xbf") ? 3 : 0;
  Builder builder;
  rapidjson::MemoryStream stream(json.constData() + mark, std::size_t(json.size() - mark));
  rapidjson::GenericReader<rapidjson::UTF8<>, rapidjson::UTF8<>, JsonAllocator> reader;
  const rapidjson::ParseResult result =
      reader.Parse<rapidjson::kParseIterativeFlag | rapidjson::kParseValidateEncodingFlag>(stream, builder);
  if (!result.IsError()) {
    value = builder.root;
    return true;
  }
  const QByteArray before = json.left(mark + int(result.Offset()));
  fault.line = before.count('\n') + 1;
  fault.column = before.size() - before.lastIndexOf('\n');
  fault.text = builder.fault;
  if (fault.text.isEmpty()) {
    fault.text = rapidjson::GetParseError_En(result.Code());
    fault.text.chop(fault.text.endsWith('.') ? 1 : 0);
  }
  return false;
}

}  // namespace ost

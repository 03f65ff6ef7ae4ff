// Writes JSON of which short lists stand on one line each, so that a file of many bits reads well and stays small.
#pragma once

#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>

#include <QByteArray>
#include <QStringList>
#include <QVector>

namespace ost {

class JsonLines {
 public:
  JsonLines() : writer_(buffer_) { writer_.SetIndent(' ', 1); }

  QByteArray result() const { return QByteArray(buffer_.GetString(), int(buffer_.GetSize())); }
  void key(const char* name) { writer_.Key(name); }
  void bytes(const QByteArray& text) { writer_.String(text.constData(), rapidjson::SizeType(text.size())); }
  void integer(int value) { writer_.Int(value); }
  void null() { writer_.Null(); }
  void begin() { writer_.StartObject(); }
  void end() { writer_.EndObject(); }

  void text(const char* name, const QString& value) {
    key(name);
    bytes(value.toLatin1());
  }
  void flag(const char* name, bool value) {
    key(name);
    writer_.Bool(value);
  }
  void number(const char* name, int value) {
    key(name);
    integer(value);
  }
  /// A list on one line, of what `elements` writes.
  template <typename Elements>
  void line(const Elements& elements) {
    writer_.StartArray();
    writer_.SetFormatOptions(rapidjson::kFormatSingleLineArray);
    elements();
    writer_.EndArray();
    writer_.SetFormatOptions(rapidjson::kFormatDefault);
  }
  void numbers(const char* name, const QVector<int>& values) {
    key(name);
    line([&] {
      for (const int value : values) integer(value);
    });
  }
  void texts(const char* name, const QStringList& values) {
    key(name);
    line([&] {
      for (const QString& value : values) bytes(value.toLatin1());
    });
  }
  /// A list of what `write` writes for each entry.
  template <typename Entry, typename Write>
  void list(const char* name, const QVector<Entry>& entries, const Write& write) {
    key(name);
    writer_.StartArray();
    for (const Entry& entry : entries) write(entry);
    writer_.EndArray();
  }

 private:
  rapidjson::StringBuffer buffer_;
  rapidjson::PrettyWriter<rapidjson::StringBuffer> writer_;
};

}  // namespace ost

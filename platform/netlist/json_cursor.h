// Reads JSON text in place, one value after the other, without building a tree: a netlist may be hundreds of megabytes
// of which a few pieces matter. Positions are offsets into the text, so that those pieces can be replaced in it.
#pragma once

#include <QByteArray>
#include <string_view>

namespace ost {

/// After a fault every call fails and ok() is false; the text is never read beyond its end.
class JsonCursor {
 public:
  JsonCursor(std::string_view text, size_t position = 0) : text_(text), position_(position) {}

  bool ok() const { return ok_; }
  size_t position() const { return position_; }
  size_t textSize() const { return text_.size(); }
  /// The value just read is not what may stand there.
  bool refuse() { return fail(); }
  /// Offset of the next value's first character.
  size_t valueStart();
  /// First character of the next value, '\0' at the end.
  char peek();

  /// Enters an object or array. Afterwards nextMember()/nextElement() until it returns false.
  bool enterObject() { return take('{'); }
  bool enterArray() { return take('['); }
  /// The next member's key as written (escapes not resolved); its value is next. False at the object's end.
  bool nextMember(std::string_view& key);
  bool nextElement();

  /// A string as written, without its quotes.
  bool readRawString(std::string_view& raw);
  bool readString(QByteArray& value);
  bool readInteger(qint64& value);
  bool skipValue();

 private:
  bool take(char expected);
  bool fail();
  void skipBlanks();

  std::string_view text_;
  size_t position_;
  bool first_ = false;
  bool ok_ = true;
};

/// Resolves the escapes of a raw JSON string.
QByteArray unescapeJson(std::string_view raw);
/// `text` as a JSON string, with its quotes. Bytes above 127 are kept.
QByteArray quoteJson(const QByteArray& text);

}  // namespace ost

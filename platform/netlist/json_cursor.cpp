// The cursor over JSON text, and the escapes of JSON strings.
#include "platform/netlist/json_cursor.h"

#include <QString>
#include <cstring>

namespace ost {

bool JsonCursor::fail() {
  ok_ = false;
  position_ = text_.size();
  return false;
}

void JsonCursor::skipBlanks() {
  while (position_ < text_.size() && static_cast<unsigned char>(text_[position_]) <= ' ') ++position_;
}

size_t JsonCursor::valueStart() {
  skipBlanks();
  return position_;
}

char JsonCursor::peek() {
  skipBlanks();
  return position_ < text_.size() ? text_[position_] : '\0';
}

bool JsonCursor::take(char expected) {
  if (!ok_ || peek() != expected) return fail();
  ++position_;
  first_ = true;
  return true;
}

bool JsonCursor::nextElement() {
  if (!ok_) return false;
  const char next = peek();
  if (next == ']' || next == '}') {
    ++position_;
    first_ = false;
    return false;
  }
  if (!first_) {
    if (next != ',') return fail();
    ++position_;
  }
  first_ = false;
  return peek() != '\0' || fail();
}

bool JsonCursor::nextMember(std::string_view& key) {
  if (!nextElement() || !readRawString(key)) return false;
  if (peek() != ':') return fail();
  ++position_;
  return true;
}

bool JsonCursor::readRawString(std::string_view& raw) {
  if (!ok_ || peek() != '"') return fail();
  const size_t begin = ++position_;
  while (position_ < text_.size()) {
    const char c = text_[position_];
    if (c == '"') {
      raw = text_.substr(begin, position_++ - begin);
      return true;
    }
    position_ += c == '\\' ? 2 : 1;
  }
  return fail();
}

bool JsonCursor::readString(QByteArray& value) {
  std::string_view raw;
  if (!readRawString(raw)) return false;
  value = unescapeJson(raw);
  return true;
}

bool JsonCursor::readInteger(qint64& value) {
  if (!ok_) return false;
  skipBlanks();
  const size_t begin = position_;
  const bool negative = begin < text_.size() && text_[begin] == '-';
  if (negative) ++position_;
  const size_t digits = position_;
  value = 0;
  while (position_ < text_.size() && text_[position_] >= '0' && text_[position_] <= '9') {
    if (position_ - digits > 17) return fail();
    value = value * 10 + (text_[position_++] - '0');
  }
  if (position_ == digits) return fail();
  if (negative) value = -value;
  return true;
}

bool JsonCursor::skipValue() {
  if (!ok_) return false;
  int depth = 0;
  do {
    const char c = peek();
    if (c == '\0') return fail();
    if (c == '"') {
      std::string_view ignored;
      if (!readRawString(ignored)) return false;
    } else {
      ++position_;
      if (c == '{' || c == '[') ++depth;
      if (c == '}' || c == ']') --depth;
      if (depth < 0) return fail();
      if (depth == 0 && c != '}' && c != ']') {  // a number or a word
        while (position_ < text_.size() && !std::strchr(",]} \t\r\n", text_[position_])) ++position_;
      }
    }
  } while (depth > 0);
  first_ = false;
  return true;
}

QByteArray unescapeJson(std::string_view raw) {
  if (raw.find('\\') == std::string_view::npos) return QByteArray(raw.data(), int(raw.size()));
  QByteArray text;
  text.reserve(int(raw.size()));
  for (size_t i = 0; i < raw.size(); ++i) {
    if (raw[i] != '\\' || i + 1 >= raw.size()) {
      text += raw[i];
      continue;
    }
    switch (raw[++i]) {
      case 'b':
        text += '\b';
        break;
      case 'f':
        text += '\f';
        break;
      case 'n':
        text += '\n';
        break;
      case 'r':
        text += '\r';
        break;
      case 't':
        text += '\t';
        break;
      case 'u':
        if (i + 4 < raw.size()) {
          const uint code = QByteArray(raw.data() + i + 1, 4).toUInt(nullptr, 16);
          text += QString(QChar(code)).toUtf8();
          i += 4;
        }
        break;
      default:
        text += raw[i];
    }
  }
  return text;
}

QByteArray quoteJson(const QByteArray& text) {
  static const char kHex[] = "0123456789abcdef";
  QByteArray quoted;
  quoted.reserve(text.size() + 2);
  quoted += '"';
  for (const char c : text) {
    if (c == '"' || c == '\\') {
      quoted += '\\';
      quoted += c;
    } else if (static_cast<unsigned char>(c) < ' ') {
      quoted += "\\u00";
      quoted += kHex[c >> 4];
      quoted += kHex[c & 15];
    } else {
      quoted += c;
    }
  }
  quoted += '"';
  return quoted;
}

}  // namespace ost

// The checks on what goes into a script of Yosys.
#include "platform/design/yosys_script.h"

#include <string.h>

#include <algorithm>

#include "platform/text/byte_text.h"

namespace ost {
namespace {

const char kTextEnd[] = "OST_END_OF_TEXT";  // Yosys takes any line that begins with it for the end.

bool isControl(char c) {
  return static_cast<unsigned char>(c) < ' ' || c == 0x7f;
}

}  // namespace

bool YosysScript::isName(const QByteArray& id) {
  // A closing ';' begins another command, and a closing backslash joins the next line.
  return id.size() > 1 && (id[0] == '\\' || id[0] == '$') && !id.endsWith(';') && !id.endsWith('\\') &&
         std::none_of(id.begin(), id.end(), [](char c) { return isControl(c) || c == ' '; });
}

bool YosysScript::isPlainFile(const QByteArray& absolute) {
  const auto plain = [](char c) {
    const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
    return letter || static_cast<unsigned char>(c) >= 0x80 || (c && strchr("_./+,=@%-", c));
  };
  return absolute.startsWith('/') && std::all_of(absolute.begin(), absolute.end(), plain);
}

YosysScript& YosysScript::openFile(int index) {
  text_ += " /proc/self/fd/" + QByteArray::number(3 + index);
  return *this;
}

YosysScript& YosysScript::word(const QByteArray& text) {
  if (text.isEmpty() || !isPlainFile('/' + text)) return refuse("word", text);
  text_ += ' ' + text;
  return *this;
}

YosysScript& YosysScript::text(const QList<QByteArray>& lines) {
  text_ += QByteArray(" <<") + kTextEnd + '\n';
  for (const QByteArray& line : lines) {
    if (std::any_of(line.begin(), line.end(), isControl) || line.trimmed().startsWith(kTextEnd))
      return refuse("line", line);
    text_ += line + '\n';
  }
  text_ += kTextEnd;
  return *this;
}

YosysScript& YosysScript::append(const YosysScript& other) {
  endLine();
  text_ += other.text_;
  if (problem_.isEmpty()) problem_ = other.problem_;
  return *this;
}

void YosysScript::endLine() {
  if (!text_.isEmpty() && !text_.endsWith('\n')) text_ += '\n';
}

YosysScript& YosysScript::raw(const char* text, std::size_t size) {
  text_.append(text, int(size));
  return *this;
}

YosysScript& YosysScript::name(const char* mark, const QByteArray& id) {
  if (!isName(id)) return refuse("name", id);
  text_ += QByteArray(" ") + mark + id;
  return *this;
}

YosysScript& YosysScript::exactly(const char* mark, const QByteArray& id) {
  if (!isName(id)) return refuse("name", id);
  text_ += mark;
  for (const char c : id) {
    // Of a pattern, the first character is the name's own backslash or '$'.
    if (strchr("*?[]\\", c) && &c != id.constData()) text_ += '\\';
    text_ += c;
  }
  return *this;
}

YosysScript& YosysScript::selectedCell(const QByteArray& module, const QByteArray& id) {
  if (module.contains('/')) return refuse("name", module);
  return name("=", module).exactly("/c:", id);
}

YosysScript& YosysScript::cellsOfType(const QByteArray& id) {
  return exactly(" t:", id);
}

YosysScript& YosysScript::dataFile(const QByteArray& name) {
  if (!isPlainFile('/' + name)) return refuse("file name", name);
  text_ += " +/" + name;
  return *this;
}

YosysScript& YosysScript::fileAfter(const char* option, const QByteArray& absolute) {
  if (!isPlainFile(absolute)) return refuse("file name", absolute);
  text_ += option + absolute;
  return *this;
}

YosysScript& YosysScript::refuse(const char* what, const QByteArray& piece) {
  if (problem_.isEmpty())
    problem_ = QStringLiteral("The %1 \"%2\" cannot be passed to Yosys; use another")
                   .arg(textFromBytes(what), textFromBytes(piece));
  return *this;
}

}  // namespace ost

// Tokens of Verilog and what follows from their order.
#include "platform/design/verilog_scan.h"

#include <ctype.h>

namespace ost {
namespace {

bool isWordChar(char c) {
  return isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '$';
}

struct Token {
  enum Kind { End, Word, Escaped, Attribute, Other } kind = End;
  int begin = 0, end = 0;
  QByteArray text;  ///< Of words, without the backslash; of others one character.
  bool is(const char* wanted) const { return kind != Escaped && text == wanted; }
  bool isName() const { return kind == Word || kind == Escaped; }
};

class Tokens {
 public:
  explicit Tokens(const QByteArray& text) : text_(text) {}

  Token next() {
    skip();
    Token token;
    token.begin = at_;
    if (at_ >= text_.size()) return token;
    const char c = text_[at_];
    token.kind = Token::Other;
    if (c == '"') {
      for (++at_; at_ < text_.size() && text_[at_] != '"'; ++at_) at_ += text_[at_] == '\\';
      ++at_;
      token.text = "\"";
    } else if (c == '\\') {
      while (at_ < text_.size() && !isspace(static_cast<unsigned char>(text_[at_]))) ++at_;
      token.kind = Token::Escaped;
      token.text = text_.mid(token.begin + 1, at_ - token.begin - 1);
    } else if (text_.mid(at_, 2) == "(*" && text_.mid(at_, 3) != "(*)") {
      const int end = text_.indexOf("*)", at_ + 2);
      at_ = end < 0 ? text_.size() : end + 2;
      token.kind = Token::Attribute;
      token.text = text_.mid(token.begin, at_ - token.begin);
    } else if (isWordChar(c)) {
      while (at_ < text_.size() && isWordChar(text_[at_])) ++at_;
      token.text = text_.mid(token.begin, at_ - token.begin);
      if (!isdigit(static_cast<unsigned char>(c))) token.kind = Token::Word;
    } else {
      token.text = text_.mid(at_++, 1);
    }
    at_ = qMin(at_, text_.size());
    token.end = at_;
    return token;
  }

 private:
  void skipTo(const char* end, int length) {
    const int found = text_.indexOf(end, at_ + length);
    at_ = found < 0 ? text_.size() : found + length;
  }
  void skip() {
    while (at_ < text_.size()) {
      if (isspace(static_cast<unsigned char>(text_[at_]))) {
        ++at_;
      } else if (text_.mid(at_, 2) == "//") {
        skipTo("\n", 1);
      } else if (text_.mid(at_, 2) == "/*") {
        skipTo("*/", 2);
      } else if (text_[at_] == '`') {
        skipDirective();
      } else {
        return;
      }
    }
  }
  /// A directive takes its line; a macro's use is only a word.
  void skipDirective() {
    int end = at_ + 1;
    while (end < text_.size() && isWordChar(text_[end])) ++end;
    const QByteArray word = text_.mid(at_ + 1, end - at_ - 1);
    at_ = end;
    if (word == "define" || word == "include" || word == "timescale" || word == "file_push" || word == "line" ||
        word == "pragma") {
      for (int line = end; line >= end; ++line) {
        line = text_.indexOf('\n', line);
        at_ = line < 0 ? text_.size() : line;
        if (line < 0 || line == 0 || text_[line - 1] != '\\') return;
      }
    }
    if (word == "ifdef" || word == "ifndef" || word == "elsif" || word == "undef") {
      while (at_ < text_.size() && (text_[at_] == ' ' || text_[at_] == '\t')) ++at_;
      while (at_ < text_.size() && isWordChar(text_[at_])) ++at_;
    }
  }

  const QByteArray& text_;
  int at_ = 0;
};

bool isOneOf(const Token& token, std::initializer_list<const char*> words) {
  for (const char* word : words)
    if (token.is(word)) return true;
  return false;
}

/// Reads one module, from behind its keyword to its end.
class ModuleReader {
 public:
  ModuleReader(const QByteArray& text, Tokens& tokens, int begin) : text_(text), tokens_(tokens), begin_(begin) {}

  ScannedModule read(bool boxAttribute) {
    Token token = next();
    while (isOneOf(token, {"automatic", "static"})) token = next();
    module_.name = token.text;
    copyStatement(begin_);
    bool ports = true;
    for (token = next(); token.kind != Token::End && !token.is("endmodule"); token = next()) {
      if (depth_ == 0 && isOneOf(token, {"input", "output", "inout", "parameter", "localparam"})) {
        copyStatement(token.begin);
      } else if (depth_ == 0 && isOneOf(token, {"typedef", "import"})) {
        copyStatement(token.begin);
      } else if (depth_ == 0 && token.is("function")) {
        ports = false;
        copyFunction(token.begin);
      } else if (token.kind != Token::Attribute && !token.is(";")) {
        ports = false;
        depth_ += isOneOf(token, {"begin", "case", "casex", "casez", "generate", "task", "specify", "fork"});
        depth_ -= isOneOf(token, {"end", "endcase", "endgenerate", "endtask", "endspecify", "join"});
      }
    }
    module_.bodyless = boxAttribute || ports;
    module_.shell += "endmodule\n";
    return module_;
  }

 private:
  Token next() {
    const Token token = tokens_.next();
    if (before_.isName() && (token.isName() || token.is("#"))) module_.words.insert(before_.text);
    before_ = token;
    return token;
  }
  /// Up to the semicolon that stands in no bracket.
  void copyStatement(int begin) {
    int brackets = 0;
    Token token = next();
    for (; token.kind != Token::End; token = next()) {
      if (token.isName()) module_.ports.insert(token.text);
      brackets += isOneOf(token, {"(", "{", "["});
      brackets -= isOneOf(token, {")", "}", "]"});
      if (brackets == 0 && token.is(";")) break;
    }
    module_.shell += text_.mid(begin, token.end - begin) + '\n';
  }
  void copyFunction(int begin) {
    Token token = next();
    while (token.kind != Token::End && !token.is("endfunction")) token = next();
    module_.shell += text_.mid(begin, token.end - begin) + '\n';
  }

  const QByteArray& text_;
  Tokens& tokens_;
  int begin_;
  int depth_ = 0;
  Token before_;
  ScannedModule module_;
};

}  // namespace

QList<ScannedModule> scanVerilog(const QByteArray& text) {
  QList<ScannedModule> modules;
  Tokens tokens(text);
  int attributes = -1;  // Where the attributes before a module begin.
  bool box = false;
  for (Token token = tokens.next(); token.kind != Token::End; token = tokens.next()) {
    if (token.kind == Token::Attribute) {
      if (attributes < 0) attributes = token.begin;
      box |= token.text.contains("blackbox") || token.text.contains("whitebox");
      continue;
    }
    if (isOneOf(token, {"module", "macromodule"}))
      modules.append(ModuleReader(text, tokens, attributes < 0 ? token.begin : attributes).read(box));
    attributes = -1;
    box = false;
  }
  return modules;
}

int encryptedLine(const QByteArray& text) {
  // IEEE 1364-2005, clause 28, and the older directive of the same purpose.
  const QByteArray flat = QByteArray(text).replace('\t', ' ');
  for (const char* mark : {"`pragma protect begin_protected", "`protected"}) {
    for (int at = flat.indexOf(mark); at >= 0; at = flat.indexOf(mark, at + 1)) {
      const int begin = flat.lastIndexOf('\n', at) + 1, after = at + int(qstrlen(mark));
      if (flat.mid(begin, at - begin).trimmed().isEmpty() && (after >= flat.size() || !isWordChar(flat[after])))
        return flat.left(at).count('\n') + 1;
    }
  }
  return 0;
}

}  // namespace ost

// Tokens of VHDL and the interface lists of entities.
#include "platform/design/vhdl_scan.h"

#include <ctype.h>

#include "platform/design/own_names.h"

namespace ost {
namespace {

struct Word {
  QByteArray spelt, lower;
};

/// Words and single characters; comments are left out, strings and character literals stand as one token.
QList<Word> wordsOf(const QByteArray& text) {
  QList<Word> words;
  const auto at = [&text](int i) { return i < text.size() ? text[i] : '\0'; };
  const auto inWord = [](char c) { return isalnum(static_cast<unsigned char>(c)) || c == '_' || c & 0x80; };
  for (int i = 0; i < text.size();) {
    int end = i + 1;
    const char c = text[i];
    if (isspace(static_cast<unsigned char>(c))) {
      ++i;
      continue;
    }
    if (c == '-' && at(i + 1) == '-') {
      const int line = text.indexOf('\n', i);
      i = line < 0 ? text.size() : line;
      continue;
    }
    if (c == '/' && at(i + 1) == '*') {
      const int close = text.indexOf("*/", i + 2);
      i = close < 0 ? text.size() : close + 2;
      continue;
    }
    if (c == '"' || (c == '\\')) {
      const int close = text.indexOf(c, i + 1);
      end = close < 0 ? text.size() : close + 1;
    } else if (c == '\'' && at(i + 2) == '\'') {
      end = i + 3;
    } else if (inWord(c)) {
      while (inWord(at(end))) ++end;
    }
    words.append({text.mid(i, end - i), text.mid(i, end - i).toLower()});
    i = end;
  }
  return words;
}

/// Reads "( a, b : in type := default; ... )" from its bracket on; `take` gets each name and its type.
template <class Take>
int readInterface(const QList<Word>& words, int at, Take take) {
  int depth = 0;
  QList<QByteArray> names;
  QByteArray type;
  enum { Names, Type, Default } part = Names;
  const auto finish = [&] {
    for (const QByteArray& name : qAsConst(names)) take(name, type.trimmed());
    names.clear();
    type.clear();
    part = Names;
  };
  for (; at < words.size(); ++at) {
    const QByteArray& word = words[at].lower;
    depth += word == "(";
    depth -= word == ")";
    if (depth == 0) break;
    if (depth == 1 && word == "(" && part == Names) continue;
    if (depth == 1 && word == ";") {
      finish();
    } else if (depth == 1 && word == ":") {
      // ":=" begins the default.
      part = at + 1 < words.size() && words[at + 1].lower == "=" ? Default : Type;
    } else if (part == Names) {
      if (word != "," && word != "signal" && word != "constant") names.append(words[at].spelt);
    } else if (part == Type && word != "in" && word != "out" && word != "inout" && word != "buffer") {
      type += word + ' ';
    }
  }
  finish();
  return at;
}

/// From behind "type" to the bracket that ends the values. Types with characters among them are left out: who types '0'
/// means a number.
void readEnum(const QList<Word>& words, int at, const QByteArray& entity, VhdlScan& scan) {
  VhdlEnum type{words[at].lower, entity, {}};
  for (at += 3; at + 1 < words.size(); at += 2) {
    const QByteArray &value = words[at].spelt, &after = words[at + 1].lower;
    if (value.startsWith('\'') || (after != "," && after != ")")) return;
    type.values.append(value);
    if (after == ")") break;
  }
  if (type.values.size() > 1) scan.enums.append(type);
}

/// The name of a type, out of words such as "work . states . state_t"; empty with a range.
QByteArray typeName(const QByteArray& type) {
  const QByteArray last = type.mid(type.lastIndexOf(' ') + 1);
  return type.contains('(') || last.isEmpty() ? QByteArray() : last;
}

/// From behind "signal" on: "a, b : state_t := IDLE;".
void readSignals(const QList<Word>& words, int at, const QByteArray& entity, VhdlScan& scan) {
  QList<QByteArray> names;
  for (; at < words.size() && words[at].lower != ":"; ++at)
    if (words[at].lower != ",") names.append(words[at].lower);
  QByteArray type;
  for (++at; at < words.size() && words[at].lower != ";" && words[at].lower != ":"; ++at) type += ' ' + words[at].lower;
  for (const QByteArray& name : qAsConst(names)) scan.signalsOfType.append({entity, name, typeName(type)});
}

}  // namespace

void scanVhdl(const QByteArray& text, VhdlScan& scan) {
  const QList<Word> words = wordsOf(text);
  const auto lower = [&words](int i) { return i >= 0 && i < words.size() ? words[i].lower : QByteArray(); };
  QByteArray scope;  // The entity whose architecture is being read.
  for (int i = 0; i < words.size(); ++i) {
    if (lower(i) == "architecture" && lower(i + 2) == "of") scope = lower(i + 3);
    if (lower(i) == "package") scope.clear();
    if (lower(i) == "type" && lower(i + 2) == "is" && lower(i + 3) == "(") readEnum(words, i + 1, scope, scan);
    if (lower(i) == "signal" && !scope.isEmpty()) readSignals(words, i + 1, scope, scan);
    if (lower(i) == ":" || lower(i) == "." || lower(i) == "component") scan.words.insert(lower(i + 1));
    if (isGhdlName(words[i].lower.toStdString())) scan.likeGhdl.insert(words[i].lower);
    if (lower(i) != "entity" || lower(i + 2) != "is") continue;
    VhdlEntity entity;
    entity.name = words[i + 1].spelt;
    for (i += 3; i < words.size() && lower(i) != "end" && lower(i) != "begin"; ++i) {
      if (lower(i) == "generic" && lower(i + 1) == "(")
        i = readInterface(words, i + 1, [&](const QByteArray& name, const QByteArray& type) {
          entity.generics.append({name, type});
        });
      else if (lower(i) == "port" && lower(i + 1) == "(")
        i = readInterface(words, i + 1, [&](const QByteArray& name, const QByteArray& type) {
          entity.ports.append(name);
          scan.signalsOfType.append({entity.name.toLower(), name.toLower(), typeName(type)});
        });
    }
    scan.entities.append(entity);
  }
}

}  // namespace ost

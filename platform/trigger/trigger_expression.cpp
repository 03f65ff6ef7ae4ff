// The parser of trigger expressions: recursive descent into a postfix program for each step, which is then run once
// over whole truth-table columns (64 rows a word).
#include "platform/trigger/trigger_expression.h"

#include <QHash>
#include <array>
#include <vector>

namespace ost {

namespace {

constexpr int kWords = (1 << kMaxExpressionUnits) / 64;
using Column = std::array<quint64, kWords>;

bool isUnitStart(QChar character) {
  const ushort c = character.unicode();
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}
bool isDigit(QChar character) {
  const ushort c = character.unicode();
  return c >= '0' && c <= '9';
}
bool isBlank(QChar character) {
  const ushort c = character.unicode();
  return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

struct Token {
  enum Kind { End, Unit, Number, Symbol };
  Kind kind = End;
  int at = 0;    ///< Of its first character.
  QString text;  ///< Of a symbol: "->", "&" and "|" also where they were doubled, or any other character.
};

/// The words of an expression, one by one.
class Scanner {
 public:
  explicit Scanner(const QString& text) : text_(text) {}
  Token next() {
    while (at_ < text_.size() && isBlank(text_[at_])) ++at_;
    Token token;
    token.at = at_;
    if (at_ >= text_.size()) return token;
    const QChar first = text_[at_++];
    const auto takeWhile = [this](auto belongs) {
      while (at_ < text_.size() && belongs(text_[at_])) ++at_;
    };
    if (isUnitStart(first)) {
      token.kind = Token::Unit;
      takeWhile([](QChar c) { return isUnitStart(c) || isDigit(c); });
    } else if (isDigit(first)) {
      token.kind = Token::Number;
      takeWhile(isDigit);
    } else {
      token.kind = Token::Symbol;
      const QChar second = at_ < text_.size() ? text_[at_] : QChar();
      const bool doubled = (first == QLatin1Char('&') || first == QLatin1Char('|')) && second == first;
      if (doubled || (first == QLatin1Char('-') && second == QLatin1Char('>'))) ++at_;
      if (doubled) {
        token.text = first;
        return token;
      }
    }
    token.text = text_.mid(token.at, at_ - token.at);
    return token;
  }

 private:
  const QString& text_;
  int at_ = 0;
};

/// One operation of a step's program: the index of a unit, or an operator.
enum Operation { OpNot = -1, OpAnd = -2, OpXor = -3, OpOr = -4 };

class Parser {
 public:
  explicit Parser(const QString& text) : text_(text), scanner_(text) {}

  bool parse(ParsedExpression& expression, QString& error) {
    const bool ok =
        text_.size() > kMaxExpressionLength
            ? fail(0, QStringLiteral("the expression is longer than %1 characters").arg(kMaxExpressionLength))
            : parseSteps();
    if (!ok) {
      error = QStringLiteral("column %1: %2").arg(errorAt_ + 1).arg(error_);
      return false;
    }
    expression.units = units_;
    expression.steps.clear();
    for (const Step& step : steps_) expression.steps.append({evaluate(step.program), step.count});
    return true;
  }

 private:
  struct Step {
    std::vector<int> program;
    int count = 1;
  };

  bool fail(int at, const QString& what) {
    errorAt_ = at;
    error_ = what;
    return false;
  }
  bool failHere(const QString& what) { return fail(token_.at, what); }

  QString found() const {
    if (token_.kind == Token::End) return QStringLiteral("the expression ends here");
    const QChar c = text_[token_.at];
    return c < QLatin1Char(' ') || c > QLatin1Char('~')
               ? QStringLiteral("found a character that is not printable ASCII")
               : QStringLiteral("found \"%1\"").arg(c);
  }

  void advance() { token_ = scanner_.next(); }
  bool take(const char* symbol) {
    if (token_.kind != Token::Symbol || token_.text != QLatin1String(symbol)) return false;
    advance();
    return true;
  }

  bool parseSteps() {
    advance();
    do {
      if (steps_.size() == size_t(kMaxSequenceDepth))
        return failHere(QStringLiteral("more than %1 steps").arg(kMaxSequenceDepth));
      steps_.emplace_back();
      if (!parseOr(0)) return false;
      if (take("*") && !parseCount()) return false;
      if (token_.kind == Token::End) return true;
      if (!take("->")) return failHere(QStringLiteral("expected an operator, \"*\", \"->\" or the end, ") + found());
    } while (true);
  }

  bool parseCount() {
    const bool isNumber = token_.kind == Token::Number;
    bool ok = false;
    const int count = isNumber ? token_.text.toInt(&ok) : 0;
    if (!ok || count < 1 || count > kMaxEventCount)
      return failHere(QStringLiteral("expected a count from 1 to %1%2")
                          .arg(kMaxEventCount)
                          .arg(isNumber ? QString() : QLatin1String(", ") + found()));
    steps_.back().count = count;
    advance();
    return true;
  }

  bool parseOr(int depth) { return parseChain(depth, "|", OpOr, &Parser::parseXor); }
  bool parseXor(int depth) { return parseChain(depth, "^", OpXor, &Parser::parseAnd); }
  bool parseAnd(int depth) { return parseChain(depth, "&", OpAnd, &Parser::parseUnary); }

  bool parseChain(int depth, const char* symbol, Operation operation, bool (Parser::*operand)(int)) {
    if (!(this->*operand)(depth)) return false;
    while (take(symbol)) {
      if (!(this->*operand)(depth)) return false;
      steps_.back().program.push_back(operation);
    }
    return true;
  }

  bool parseUnary(int depth) {
    if (depth > kMaxExpressionNesting)
      return failHere(QStringLiteral("parentheses and \"!\" are nested more than %1 deep").arg(kMaxExpressionNesting));
    if (take("!")) {
      if (!parseUnary(depth + 1)) return false;
      steps_.back().program.push_back(OpNot);
      return true;
    }
    const int start = token_.at;
    if (take("(")) {
      if (!parseOr(depth + 1)) return false;
      if (take(")")) return true;
      return failHere(QStringLiteral("expected \")\" for the \"(\" at column %1, ").arg(start + 1) + found());
    }
    if (token_.kind != Token::Unit)
      return failHere(QStringLiteral("expected a trigger unit, \"!\" or \"(\", ") + found());
    auto known = unitIndex_.find(token_.text);
    if (known == unitIndex_.end()) {
      if (units_.size() == kMaxExpressionUnits)
        return failHere(QStringLiteral("more than %1 different trigger units").arg(kMaxExpressionUnits));
      known = unitIndex_.insert(token_.text, units_.size());
      units_ << token_.text;
    }
    steps_.back().program.push_back(known.value());
    advance();
    return true;
  }

  QByteArray evaluate(const std::vector<int>& program) const {
    // Rows beyond the table of few units are computed too and cut off.
    static const quint64 lowBits[] = {0xAAAAAAAAAAAAAAAA, 0xCCCCCCCCCCCCCCCC, 0xF0F0F0F0F0F0F0F0,
                                      0xFF00FF00FF00FF00, 0xFFFF0000FFFF0000, 0xFFFFFFFF00000000};
    const int rows = 1 << units_.size(), words = qMax(1, rows / 64);
    std::vector<Column> stack;
    for (int operation : program) {
      if (operation >= 0) {
        stack.emplace_back();
        for (int w = 0; w < words; ++w)
          stack.back()[w] = operation < 6 ? lowBits[operation] : (w >> (operation - 6)) & 1 ? ~quint64(0) : 0;
      } else if (operation == OpNot) {
        for (int w = 0; w < words; ++w) stack.back()[w] = ~stack.back()[w];
      } else {
        const Column right = stack.back();
        stack.pop_back();
        Column& left = stack.back();
        for (int w = 0; w < words; ++w)
          left[w] = operation == OpAnd   ? left[w] & right[w]
                    : operation == OpXor ? left[w] ^ right[w]
                                         : left[w] | right[w];
      }
    }
    QByteArray table(rows, '0');
    for (int row = 0; row < rows; ++row)
      if ((stack.back()[row / 64] >> (row % 64)) & 1) table[row] = '1';
    return table;
  }

  const QString& text_;
  Scanner scanner_;
  Token token_;  ///< The one that is looked at.
  int errorAt_ = 0;
  QString error_;
  QStringList units_;
  QHash<QString, int> unitIndex_;
  std::vector<Step> steps_;
};

}  // namespace

bool parseTriggerExpression(const QString& text, ParsedExpression& expression, QString& error) {
  return Parser(text).parse(expression, error);
}

QSet<QString> unitNamesIn(const QString& text) {
  QSet<QString> names;
  Scanner scanner(text);
  for (Token token = scanner.next(); token.kind != Token::End; token = scanner.next())
    if (token.kind == Token::Unit) names.insert(token.text);
  return names;
}

QString renameUnitInExpression(const QString& text, const QString& oldName, const QString& newName) {
  QString result;
  int copied = 0;
  Scanner scanner(text);
  for (Token token = scanner.next(); token.kind != Token::End; token = scanner.next()) {
    if (token.kind != Token::Unit || token.text != oldName) continue;
    result += text.mid(copied, token.at - copied) + newName;
    copied = token.at + oldName.size();
  }
  result += text.mid(copied);
  return result;
}

}  // namespace ost

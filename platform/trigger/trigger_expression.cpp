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

bool isUnitStart(QChar c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}
bool isDigit(QChar c) {
  return c >= '0' && c <= '9';
}
bool isUnitChar(QChar c) {
  return isUnitStart(c) || isDigit(c);
}
bool isBlank(QChar c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

/// One operation of a step's program: the index of a unit, or an operator.
enum Operation { OpNot = -1, OpAnd = -2, OpXor = -3, OpOr = -4 };

class Parser {
 public:
  explicit Parser(const QString& text) : text_(text) {}

  bool parse(ParsedExpression& expression, QString& error) {
    const bool ok = text_.size() > kMaxExpressionLength
                        ? fail(0, QString("the expression is longer than %1 characters").arg(kMaxExpressionLength))
                        : parseSteps();
    if (!ok) {
      error = QString("column %1: %2").arg(errorAt_ + 1).arg(error_);
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

  QString found() const {
    if (at_ >= text_.size()) return "the expression ends here";
    const QChar c = text_[at_];
    return c < ' ' || c > '~' ? QString("found a character that is not printable ASCII") : QString("found '%1'").arg(c);
  }

  void skipBlanks() {
    while (at_ < text_.size() && isBlank(text_[at_])) ++at_;
  }

  /// Takes an operator character, once or (`&&`, `||`) twice.
  bool take(char c, bool mayDouble = false) {
    skipBlanks();
    if (at_ >= text_.size() || text_[at_] != c) return false;
    ++at_;
    if (mayDouble && at_ < text_.size() && text_[at_] == c) ++at_;
    return true;
  }

  bool parseSteps() {
    do {
      if (steps_.size() == size_t(kMaxSequenceDepth))
        return fail(at_, QString("more than %1 steps").arg(kMaxSequenceDepth));
      steps_.emplace_back();
      if (!parseOr(0)) return false;
      if (take('*') && !parseCount()) return false;
      skipBlanks();
      if (at_ >= text_.size()) return true;
      if (text_.mid(at_, 2) != "->") return fail(at_, "expected an operator, '*', '->' or the end, " + found());
      at_ += 2;
    } while (true);
  }

  bool parseCount() {
    skipBlanks();
    const int start = at_;
    while (at_ < text_.size() && isDigit(text_[at_])) ++at_;
    bool ok = false;
    const int count = text_.mid(start, at_ - start).toInt(&ok);
    if (!ok || count < 1 || count > kMaxEventCount) {
      const bool none = start == at_;
      return fail(start,
                  QString("expected a count from 1 to %1%2").arg(kMaxEventCount).arg(none ? ", " + found() : ""));
    }
    steps_.back().count = count;
    return true;
  }

  bool parseOr(int depth) { return parseChain(depth, '|', true, OpOr, &Parser::parseXor); }
  bool parseXor(int depth) { return parseChain(depth, '^', false, OpXor, &Parser::parseAnd); }
  bool parseAnd(int depth) { return parseChain(depth, '&', true, OpAnd, &Parser::parseUnary); }

  bool parseChain(int depth, char symbol, bool mayDouble, Operation operation, bool (Parser::*operand)(int)) {
    if (!(this->*operand)(depth)) return false;
    while (take(symbol, mayDouble)) {
      if (!(this->*operand)(depth)) return false;
      steps_.back().program.push_back(operation);
    }
    return true;
  }

  bool parseUnary(int depth) {
    skipBlanks();
    if (depth > kMaxExpressionNesting)
      return fail(at_, QString("parentheses and '!' are nested more than %1 deep").arg(kMaxExpressionNesting));
    if (take('!')) {
      if (!parseUnary(depth + 1)) return false;
      steps_.back().program.push_back(OpNot);
      return true;
    }
    const int start = at_;
    if (take('(')) {
      if (!parseOr(depth + 1)) return false;
      if (take(')')) return true;
      return fail(at_, QString("expected ')' for the '(' at column %1, ").arg(start + 1) + found());
    }
    if (at_ >= text_.size() || !isUnitStart(text_[at_]))
      return fail(at_, "expected a trigger unit, '!' or '(', " + found());
    while (at_ < text_.size() && isUnitChar(text_[at_])) ++at_;
    const QString name = text_.mid(start, at_ - start);
    auto known = unitIndex_.find(name);
    if (known == unitIndex_.end()) {
      if (units_.size() == kMaxExpressionUnits)
        return fail(start, QString("more than %1 different trigger units").arg(kMaxExpressionUnits));
      known = unitIndex_.insert(name, units_.size());
      units_ << name;
    }
    steps_.back().program.push_back(known.value());
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
  int at_ = 0;
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

QString renameUnitInExpression(const QString& text, const QString& oldName, const QString& newName) {
  QString result;
  for (int at = 0; at < text.size();) {
    const int start = at;
    if (!isUnitChar(text[at])) {
      result += text[at++];
      continue;
    }
    while (at < text.size() && isUnitChar(text[at])) ++at;
    const QString word = text.mid(start, at - start);
    result += word == oldName ? newName : word;
  }
  return result;
}

}  // namespace ost

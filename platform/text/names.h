// Names that the user gives to cores, units, expressions and buses: the one rule for them, and free default names.
#pragma once

#include <QString>
#include <QStringList>
#include <functional>

namespace ost {

constexpr int kMaxNameLength = 255;      ///< Characters of a name given by the user.
constexpr int kMaxNetNameLength = 4096;  ///< Characters of a hierarchical net name.

/// Letters, digits and underscore, not beginning with a digit. Any length; the empty text is none.
bool isIdentifier(const QString& text);
/// The same with "$" behind the first character, as Verilog has it.
bool isVerilogIdentifier(const QString& text);
bool isVerilogKeyword(const QString& text);

/// Checks a user's name; `what` begins the sentence ("The core name"). False with the reason and the rule in `error`.
bool checkName(const QString& name, const QString& what, QString& error);

/// `text` in quotes, shortened when it is long and with unprintable characters shown as "?".
QString quoted(const QString& text);

/// Hands out prefix1, prefix2, ...: always the first number that is free. Constant time but for numbers in use.
class DefaultNames {
 public:
  explicit DefaultNames(const char* prefix) : prefix_(QLatin1String(prefix)) {}
  QString next(const std::function<bool(const QString&)>& isTaken);
  /// A name is no longer in use.
  void released(const QString& name);

 private:
  QString prefix_;
  int lowest_ = 1;  ///< All numbers below are taken.
};

}  // namespace ost

// Names that the user gives to cores, units, expressions and buses: the one rule for them, free default names, and
// the search for names that are near a mistyped one.
#pragma once

#include <QString>
#include <QStringList>
#include <functional>

#include "framework/ist_data.h"

namespace ost {

constexpr int kMaxNameLength = 255;      ///< Characters of a name that the user gives.
constexpr int kMaxNetNameLength = 4096;  ///< Characters of a hierarchical net name.

/// Letters, digits and underscore, not beginning with a digit. Any length; the empty text is none.
ISTDATA_API bool isIdentifier(const QString& text);
ISTDATA_API bool isVerilogKeyword(const QString& text);

/// Checks a user's name; `what` begins the sentence ("The core name"). False with the reason and the rule in `error`.
ISTDATA_API bool checkName(const QString& name, const QString& what, QString& error);

/// `text` in quotes, shortened when it is long and with unprintable characters shown as "?".
ISTDATA_API QString quoted(const QString& text);

/// Collects names and keeps the few that are nearest to a mistyped one.
class ISTDATA_API NearestNames {
 public:
  explicit NearestNames(const QString& wanted);
  void offer(const QString& candidate);
  /// " (did you mean a, b?)", or empty when nothing offered is near.
  QString hint() const;

 private:
  QString wanted_;
  QList<QPair<int, QString>> best_;  ///< Distance and name, best first.
};

/// Hands out prefix1, prefix2, ...: always the first number that is free. Constant time but for numbers in use.
class ISTDATA_API DefaultNames {
 public:
  explicit DefaultNames(const char* prefix) : prefix_(QLatin1String(prefix)) {}
  QString next(const std::function<bool(const QString&)>& isTaken);
  /// A name is no longer in use.
  void released(const QString& name);
  void released(QLatin1String name) {
    if (name.startsWith(prefix_)) released(QString(name));
  }

 private:
  QString prefix_;
  int lowest_ = 1;  ///< All numbers below are taken.
};

}  // namespace ost

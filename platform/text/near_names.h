// Names that are near a mistyped one, and the one wording in which errors offer them.
#pragma once

#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>

namespace ost {

/// " (did you mean a, b?)", to be put before the full stop of an error; empty without names.
QString nearHint(const QStringList& names);

/// Collects names and keeps the three that are nearest to a mistyped one.
class NearestNames {
 public:
  explicit NearestNames(const QString& wanted);
  void offer(const QString& candidate);
  QString hint() const;

 private:
  QByteArray wanted_;
  QList<QPair<int, QString>> best_;  ///< Distance and name, best first.
};

}  // namespace ost

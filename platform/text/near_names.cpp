// The search for near names.
#include "platform/text/near_names.h"

#include <algorithm>

#include "platform/text/edit_distance.h"

namespace ost {

QString nearHint(const QStringList& names) {
  if (names.isEmpty()) return QString();
  return QStringLiteral(" (did you mean %1?)").arg(names.join(QStringLiteral(", ")));
}

NearestNames::NearestNames(const QString& wanted) : wanted_(wanted.left(int(kMaxComparedBytes)).toLatin1()) {}

void NearestNames::offer(const QString& candidate) {
  const int keep = 3;
  const int limit = best_.size() == keep ? best_.last().first - 1 : std::max(1, int(wanted_.size()) / 4);
  const QByteArray bytes = candidate.left(int(kMaxComparedBytes)).toLatin1();
  const int distance = editDistance(std::string_view(wanted_.constData(), size_t(wanted_.size())),
                                    std::string_view(bytes.constData(), size_t(bytes.size())), limit);
  if (distance > limit) return;
  const QPair<int, QString> entry(distance, candidate);
  best_.insert(std::upper_bound(best_.begin(), best_.end(), entry) - best_.begin(), entry);
  if (best_.size() > keep) best_.removeLast();
}

QString NearestNames::hint() const {
  QStringList names;
  for (const auto& entry : best_) names << entry.second;
  return nearHint(names);
}

}  // namespace ost

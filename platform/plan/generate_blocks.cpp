// Protection and generate blocks.
#include "platform/plan/generate_blocks.h"

#include <QRegularExpression>

namespace ost {

QString withoutProtection(const QString& key) {
  return key.startsWith(QLatin1Char('\\')) ? key.mid(1) : key;
}

QStringList splitAtBlocks(const QString& name) {
  static const QRegularExpression blocks(QStringLiteral("^(?:[A-Za-z_][A-Za-z0-9_$]*(?:\\[-?[0-9]+\\])*\\.)+(?=.)"));
  const QString front = blocks.match(name).captured();
  return front.split(QLatin1Char('.'), Qt::SkipEmptyParts) << name.mid(front.size());
}

}  // namespace ost

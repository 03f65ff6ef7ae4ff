// The layout of the serdes core; platform/rtl/ostrel_serdes.v is built by it.
#include "platform/plan/serdes_plan.h"

#include <QRegularExpression>

#include "platform/text/numbers.h"

namespace ost {

bool isSerdesWord(const QString& word) {
  static const QRegularExpression form(QStringLiteral("\\A[A-Za-z][A-Za-z0-9_.-]{0,31}\\z"));
  return form.match(word).hasMatch();
}

int PlanSerdes::rowBits() const {
  return bitsFor(rows());
}

/// A level rises at most in every other of the round's clocks.
int PlanSerdes::edgeBits() const {
  return bitsFor((rows() + 1) / 2 + 1);
}

int PlanSerdes::statusBits() const {
  return kSerdesCellBits << rowBits();
}

QList<QPair<int, qint64>> serdesInfo(const PlanSerdes& serdes) {
  return {{16, serdes.clocks.size()}, {16, serdes.levels.size()}, {32, 0}, {56, 0}};
}

}  // namespace ost

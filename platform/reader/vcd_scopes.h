// The scopes and variables of a value change dump: which names a capture's signals get there. What they do over time is
// the writer's business.
#pragma once

#include <QByteArray>
#include <QMap>
#include <QSet>
#include <QVector>
#include <functional>

#include "platform/reader/capture.h"

namespace ost {

struct VcdVariable {
  QByteArray name;   ///< As the file has it; see vcdName().
  QByteArray range;  ///< "[7:0]" or empty.
  int width = 1;
  bool isText = false;
  const PlanProbe* probe = nullptr;                      ///< What it shows; null for the core's own.
  int capture = -1;                                      ///< Index of the one that it belongs to.
  std::function<QByteArray(int row, int window)> value;  ///< Leftmost bit first.
};

struct VcdScope {
  QMap<QByteArray, VcdScope> children;
  QVector<VcdVariable> variables;
  QSet<QByteArray> names;
};

struct VcdLayout {
  VcdScope top, own;
  QByteArray topName, ownName;
};

/// An identifier as it is, and any other name as an escaped identifier, "\fb+1", which viewers keep whole. What cannot
/// stand in the file (blanks, control characters, bytes above 126) becomes "_".
QByteArray vcdName(const QString& name);

/// Places all variables of the captures, which must outlive the layout. With `singleBits` each bit of a vector is a
/// variable of its own, and there are no texts.
VcdLayout layOutVcd(const QVector<Capture>& captures, const QString& topModule, bool singleBits);

}  // namespace ost

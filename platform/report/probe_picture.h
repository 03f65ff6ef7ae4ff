// The part of the instance hierarchy that is probed, as a tree for people.
#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QStringList>
#include <memory>

#include "platform/plan/insert_plan.h"

namespace ost {

class ProbePicture {
 public:
  ProbePicture() = default;
  explicit ProbePicture(const InsertPlan& plan);

  /// A line an instance, with the number of bits that each core reads there.
  QStringList asText() const;
  /// An SVG element: a box an instance, coloured marks for the cores.
  QByteArray asSvg() const;

 private:
  struct Instance {
    QMap<int, int> bits;  ///< By core, those of nets in this instance itself.
    QMap<QString, std::shared_ptr<Instance>> children;
  };
  /// An instance in reading order.
  struct Row {
    QString name;
    int depth = 0;
    int parent = -1;  ///< Row.
    QMap<int, int> bits;
  };

  void addRows(const QString& name, const Instance& instance, int depth, int parent);

  QList<Row> rows_;
  QStringList cores_;
  int leftOut_ = 0;  ///< Instances beyond what a person reads.
};

}  // namespace ost

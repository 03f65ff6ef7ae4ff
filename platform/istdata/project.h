// The open project: the embedded classes behind the contract's opaque and plain types. Lookups by name are hashed;
// adding, finding and removing an entry takes constant time but for the shift of a pointer list.
#pragma once

#include <memory>
#include <vector>

#include "framework/ist_data.h"
#include "platform/istdata/project_model.h"
#include "platform/istdata/trace_tree.h"
#include "platform/text/names.h"

namespace mero {
namespace ostrel {

/// One trigger unit of a dataset.
class istTU {
 public:
  ost::TriggerUnit unit;
  std::size_t place;  ///< Index in the dataset's list, kept by the dataset.
};

/// A core's trigger units and expressions, each in order and known by a unique name.
class ISTDATA_API istDataset {
 public:
  const std::vector<std::unique_ptr<istTU>>& units() const;
  const std::vector<std::unique_ptr<ost::TriggerExpression>>& expressions() const { return expressions_; }
  istTU* findUnit(const QString& name) const;
  ost::TriggerExpression* findExpression(const QString& name) const;

  // The caller has checked the names: unknown on adding and as new name, known otherwise.
  istTU* addUnit(ost::TriggerUnit unit);
  void renameUnit(istTU* unit, const QString& newName);
  void removeUnit(istTU* unit);
  ost::TriggerExpression* addExpression(ost::TriggerExpression expression);
  void renameExpression(ost::TriggerExpression* expression, const QString& newName);
  void removeExpression(ost::TriggerExpression* expression);
  /// Sets text and used units, which the caller has parsed out of it.
  void setExpressionText(ost::TriggerExpression* expression, const QString& text, const QStringList& units);

  /// Names of the expressions that use the unit, in order.
  QStringList expressionsUsing(const QString& unitName) const;
  QString freeUnitName();
  QString freeExpressionName();

 private:
  /// Removing leaves a null entry, so that it costs the same in any list; units() closes the gaps.
  mutable std::vector<std::unique_ptr<istTU>> units_;
  mutable bool unitGaps_ = false;
  std::vector<std::unique_ptr<ost::TriggerExpression>> expressions_;
  QHash<QString, istTU*> unitByName_;
  QHash<QString, ost::TriggerExpression*> expressionByName_;
  QHash<QString, int> unitUses_;  ///< Expressions that use a unit, by its name.
  ost::DefaultNames unitNames_{"TU"}, expressionNames_{"TE"};
};

}  // namespace ostrel
}  // namespace mero

namespace ost {

/// One debug core.
class ISTDATA_API Core : public mero::ostrel::istCore {
 public:
  explicit Core(const QString& coreName);
  ~Core();

  CoreOptions options;
  bool enabled = true;  ///< Takes part in the next run.
  std::unique_ptr<TraceTree> trace;
  mero::ostrel::istDataset dataset;
};

}  // namespace ost

namespace mero {
namespace ostrel {

/// The project itself.
class ISTDATA_API istProject {
 public:
  istProject();
  ~istProject();
  ost::Core* findCore(const QString& coreName) const;

  QString fileName;  ///< Byte text; empty while untitled.
  bool changed = false;
  std::vector<std::unique_ptr<ost::Core>> cores;
  ost::Core* activeCore = nullptr;  ///< One of `cores`, or null.
  std::unique_ptr<istWishboneMaster> wishbone;
  bool wishboneConnected = false;
  ENDIAN_MODE wishboneEndian = ENDIAN_BIG;
  std::unique_ptr<istSerdesCore> serdes;
};

}  // namespace ostrel
}  // namespace mero

// The open project: the embedded classes behind the contract's opaque and plain types. Lookups by name are hashed;
// adding, finding and removing an entry takes constant time but for the shift of a pointer list.
#pragma once

#include <memory>
#include <vector>

#include "framework/ist_data.h"
#include "platform/istdata/project_model.h"

namespace mero {
namespace ostrel {

/// One trigger unit of a dataset.
class istTU {
 public:
  ost::TriggerUnit unit;
};

/// A core's trigger units and expressions, each in order and known by a unique name.
class ISTDATA_API istDataset {
 public:
  const std::vector<std::unique_ptr<istTU>>& units() const { return units_; }
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

 private:
  std::vector<std::unique_ptr<istTU>> units_;
  std::vector<std::unique_ptr<ost::TriggerExpression>> expressions_;
  QHash<QString, istTU*> unitByName_;
  QHash<QString, ost::TriggerExpression*> expressionByName_;
};

}  // namespace ostrel
}  // namespace mero

namespace ost {

/// The trace tree of a core. A signal node (kind 4) is one bit and bears its full bit name; a bus (kind 2) has a name
/// of its own; a reference (kind 3) targets the signal node that captures the same bit.
class TraceTree;

/// One debug core.
class Core : public mero::ostrel::istCore {
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
class istProject {
 public:
  QString fileName;  ///< Wire text; empty while untitled.
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

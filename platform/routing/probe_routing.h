// Routes every probed bit from its instance up to the top: which modules get a probe port, which of them must be made
// unique, and what the top connects to the debug module. Only decides; netlist_editor.h writes.
#pragma once

#include <QHash>
#include <map>

#include "platform/netlist/netlist_bits.h"
#include "platform/rtl/debug_module.h"

namespace ost {

/// An instance inside a changed module (or the top) whose own module is changed too.
struct ChildUse {
  int instance;  ///< Index into NetlistModule::instances.
  int variant;   ///< Index into ProbeRouting::variants().
};

/// A module as changed for one or more of its instances. Its probe port carries `tapped`, bit 0 first, and then the
/// probe ports of the children, one after the other.
struct ModuleVariant {
  int module;            ///< Index of the original.
  QByteArray name;       ///< The original's, or a new one when other instances stay unchanged.
  bool inPlace = false;  ///< Takes the original's place.
  QByteArray port;       ///< Name of the probe port.
  QVector<int> tapped;   ///< Bits of the module.
  std::vector<ChildUse> children;
  int width = 0;  ///< Of the probe port.
};

/// Where the top finds a bit that the debug module looks at.
struct TopSource {
  int bit = kBitX;   ///< Bit of the top, when `child` is -1.
  int child = -1;    ///< Index into ProbeRouting::topChildren().
  int position = 0;  ///< In that child's probe port.
};

/// A port of the debug module and what it is connected to in the top.
struct DebugConnection {
  DebugPort port;
  QVector<NetBit> nets;        ///< Inputs from the design, bit 0 first.
  QVector<TopSource> sources;  ///< For each of `nets`.
};

class ProbeRouting {
 public:
  /// False with a text when a bit of the plan is not in the netlist.
  bool build(const NetlistBits& netlist, const InsertPlan& plan, QString& error);

  const std::vector<ModuleVariant>& variants() const { return variants_; }
  const std::vector<ChildUse>& topChildren() const { return topChildren_; }
  const std::vector<DebugConnection>& connections() const { return connections_; }

 private:
  /// An instance that holds a tap, itself or below.
  struct Node {
    int module;
    std::map<int, int> children;  // instance -> node
    QVector<int> tapped;
    QHash<int, int> positionOf;  // tapped bit -> position
    int variant = -1;
    int offset = 0;  // of its port within the parent's port
  };
  int nodeAt(const NetlistBits& netlist, const std::vector<int>& path);
  void countInstances(const NetlistBits& netlist);
  void makeVariants(const NetlistBits& netlist);
  QByteArray freeModuleName(const NetlistBits& netlist, const NetlistModule& module);

  std::vector<Node> nodes_;
  std::vector<qint64> instanceCount_;  // of each module, over the whole hierarchy
  std::vector<ModuleVariant> variants_;
  std::vector<ChildUse> topChildren_;
  std::vector<DebugConnection> connections_;
  QHash<QByteArray, bool> newNames_;
};

/// `wanted`, or with the first suffix _1, _2, ... for which `taken` is false.
QByteArray freeName(const QByteArray& wanted, const std::function<bool(const QByteArray&)>& taken);

}  // namespace ost

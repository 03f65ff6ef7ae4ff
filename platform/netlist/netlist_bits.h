// The netlist by its text and the ids of its bits: the outline, the indexes of the modules that were asked about, and
// the way of a bit through the hierarchy.
#pragma once

#include <map>

#include "platform/netlist/module_index.h"
#include "platform/netlist/netlist.h"

namespace ost {

/// A bit of one instance: the way down from the top as instance indexes, the module there, and the bit's id in it.
struct PlacedBit {
  std::vector<int> path;  ///< Each an index into NetlistModule::instances of the module above.
  int module = -1;
  int bit = kBitX;
};

/// A cell that was looked at.
struct KnownCell {
  CellConnections connections;
  PortBits outputs;  ///< Of an instance: the module's outputs and inouts. Of a memory: its RD_DATA.
};

struct NetlistBits {
  NetlistText text;
  QList<QByteArray> topParameters;  ///< Of the top, in the order of the source; empty for a netlist given as JSON.
  mutable std::map<int, std::unique_ptr<ModuleIndex>> indexes;
  mutable std::unordered_map<size_t, KnownCell> largeCells;
  mutable KnownCell smallCell;

  const ModuleIndex& index(int module) const;
  /// The cell at the offset, an instance of `module` or of none (-1). Good until the next call.
  const KnownCell& cell(size_t offset, int module) const;

  /// The instance that "u_a/u_b" names. False when there is none.
  bool findInstance(const QString& path, PlacedBit& place) const;
  bool place(const NetBit& bit, PlacedBit& place) const;
  /// The parent's bit at a port bit of the instance; false at the top or when it is not connected there.
  bool climb(const PlacedBit& inner, PlacedBit& outer) const;
  /// The child's bit behind an output or inout of the instance `cell` that connects to `bit`; false when none does.
  bool descend(const PlacedBit& outer, const IndexedCell& cell, PlacedBit& inner) const;
  /// Where the bit is driven, following ports both ways.
  PlacedBit source(const PlacedBit& start, LocalDriver& driver) const;
  /// The same bit seen from as far up as it goes through inputs and inouts, or to where `stop` is true.
  PlacedBit topmost(PlacedBit place, const std::function<bool(const PlacedBit&)>& stop = {}) const;

  /// What a bit is that the cell drives, and its clock when it has one.
  void describeCell(const PlacedBit& place, const IndexedCell& looked, BitDriver& result) const;

  NetBit named(const PlacedBit& place) const;
};

}  // namespace ost

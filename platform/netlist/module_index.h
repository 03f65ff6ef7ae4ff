// One module's nets and drivers, read from the netlist's text on demand and kept small: a flat design is one module
// with half a million nets.
#pragma once

#include <QHash>
#include <deque>
#include <functional>
#include <unordered_map>
#include <vector>

#include "platform/netlist/netlist_text.h"

namespace ost {

/// What drives a bit within its module.
struct LocalDriver {
  enum Kind { None, InputPort, InOutPort, Cell };
  Kind kind = None;
  int cell = -1;  ///< For Cell: index into ModuleIndex::cells().
};

enum class CellKind : unsigned char { Logic, FlipFlop, Latch, MemoryRead, MemoryBlock, Instance };

struct IndexedCell {
  size_t offset;  ///< Of its object in the text.
  int instance;   ///< Index into NetlistModule::instances, -1 for a cell of Yosys' own.
  CellKind kind;
};

/// A cell's connections, read in full for the one cell that is looked at.
struct CellConnections {
  QHash<QByteArray, QVector<int>> ports;
  QHash<QByteArray, QByteArray> parameters;
  TextSpan typeSpan;       ///< The type's string with its quotes.
  size_t connections = 0;  ///< Offset of the connections' object.
  size_t directions = 0;   ///< Offset of the port_directions' object, 0 when missing.
  size_t end = 0;          ///< Of the cell's object.
};
CellConnections readCell(const NetlistText& netlist, size_t offset);

/// Where bits stand in the bits of several ports, found without going through them: a vector of a million bits is asked
/// about bit by bit.
class PortBits {
 public:
  struct Place {
    int bit, port, position;
  };
  void add(int port, const QVector<int>& bits);
  /// To be called when all are added.
  void sort();
  /// The places of a bit, in the order of ports and positions.
  std::pair<const Place*, const Place*> find(int bit) const;

 private:
  std::vector<Place> places_;
};

class ModuleIndex {
 public:
  ModuleIndex(const NetlistText& netlist, const NetlistModule& module);

  /// The bits of a net; false when the module does not declare it.
  bool netBits(const QByteArray& net, QVector<int>& bits) const;
  /// Where the array of a net's bits stands in the text; empty when the module does not declare the net.
  TextSpan netBitsSpan(const QByteArray& net) const;
  /// A name for a bit: the source's rather than one of Yosys' own, the first in the netlist's order. False for
  /// constants.
  bool nameOf(int bit, QByteArray& net, int& position) const;
  /// The position's index as the source counts it; -1 when the net is a scalar.
  int sourceIndex(const QByteArray& net, int position) const;

  /// Calls `visit` for each net that the source names, in the order of the names.
  void forEachPublicNet(
      const std::function<void(const QByteArray& name, const QVector<int>& bits, bool hasInitialValue)>& visit) const;

  LocalDriver driver(int bit) const;
  /// Other instances that a bit meets at an inout port; they count as drivers when there is no other.
  std::vector<int> inOutCells(int bit) const;
  /// The bits that meet an inout port of another instance, in no order.
  std::vector<int> inOutBits() const;
  /// Inputs and inouts of the module by their bits; ports as in NetlistModule::portList.
  const PortBits& inputs() const { return inputs_; }
  const std::vector<IndexedCell>& cells() const { return cells_; }
  int highestBit() const { return highestBit_; }
  /// True when a net, cell or memory of the module bears the name.
  bool nameTaken(const QByteArray& name) const;

 private:
  struct Net {
    std::string_view name;  ///< Unescaped.
    size_t object;          ///< Offset of the net's object.
    bool hidden;
  };
  /// What a net's object says.
  struct NetObject {
    QVector<int> bits;
    qint64 offset = 0, upto = 0;
    bool hasInitialValue = false;
  };
  std::string_view keep(std::string_view rawKey);
  void readNets(size_t offset);
  void readCells(const NetlistModule& module);
  void readOneCell(JsonCursor& cursor, const NetlistModule* definition, IndexedCell& cell);
  void noteConnection(NetlistPort::Direction direction, const QVector<int>& bits);
  void noteDriver(int bit, int code, bool weak);
  const Net* findNet(const QByteArray& name) const;
  NetObject readObject(const Net& net) const;
  const NetObject& object(const Net& net) const;

  const NetlistText& netlist_;
  std::vector<Net> nets_;  // in the order of their names
  std::vector<IndexedCell> cells_;
  std::vector<int> driver_;  // by bit: 0 none, 1 input, 2 inout, 3.. cell
  std::unordered_multimap<int, int> inOutCells_;
  std::vector<std::string_view> cellNames_;  // of public cells and memories, sorted
  struct NameOfBit {
    int net = 0;       // index into nets_ + 1
    int position = 0;  // in its bits
  };
  mutable std::vector<NameOfBit> nameOfBit_;                    // by bit; filled on first use
  mutable std::unordered_map<const Net*, NetObject> wideNets_;  // those that were asked about
  mutable NetObject narrowNet_;                                 // the last one that was asked about
  PortBits inputs_;
  std::deque<std::string> unescaped_;
  int highestBit_ = 1;
};

}  // namespace ost

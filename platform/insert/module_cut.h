// A module cut at its instances, memories and tri-state buffers, so that it can be compared with another edition of
// itself on its own: what such a cell takes becomes an output, what it gives an input.
#pragma once

#include <QSet>
#include <map>

#include "platform/netlist/netlist_bits.h"

namespace ost {

struct CutPort {
  bool input = false;
  int bit = kBitX;
};

struct CutCell {
  QByteArray type;
  QHash<QByteArray, QByteArray> parameters;
};

/// A register as the proof sees it besides its logic.
struct CutRegister {
  int clock = kBitX;
  bool risingEdge = true;
};

class ModuleCut {
 public:
  /// `added`: nets that only one edition has; nothing is named after them.
  ModuleCut(const NetlistBits& netlist, int module, const QSet<QByteArray>& added = {});

  const NetlistModule& module() const { return module_; }
  /// By name: "port|d|3", "cell|u_rx.q|0", "mem|table.RD_DATA|7", "tri|pad.A|0".
  std::map<QByteArray, CutPort>& ports() { return ports_; }
  const std::map<QByteArray, CutPort>& ports() const { return ports_; }
  /// Instances by name, memories by "mem|name".
  const std::map<QByteArray, CutCell>& cells() const { return cells_; }
  /// Decides which bits are inputs; call when ports() is complete.
  void direct();
  int freshBit() { return nextBit_++; }

  /// One name for each flip-flop cell: "state|0" and the like.
  std::map<QByteArray, CutRegister> registers() const;
  bool registerAt(const QByteArray& net, int position, CutRegister& result) const;
  /// Initial values of the bits that have one.
  const QHash<int, char>& initialValues() const { return initial_; }
  const std::map<QByteArray, QVector<int>>& initialNets() const { return initialNets_; }
  bool netBits(const QByteArray& net, QVector<int>& bits) const { return index_.netBits(net, bits); }

  /// The cut module as a member of a netlist's modules.
  QByteArray json(const QByteArray& name) const;

 private:
  struct TriState {
    QVector<int> y, a;
    int enable;
  };
  struct Memory {
    QByteArray name;  ///< "mem|" and its own.
    CellConnections cell;
  };
  void addTriStates(const std::vector<TriState>& buffers, const QHash<int, QByteArray>& names);
  void addMemory(const Memory& memory, const QHash<int, QByteArray>& names);
  void readNets(const QSet<int>& named, const QSet<QByteArray>& added, QHash<int, QByteArray>& names);
  void addPorts(const QByteArray& prefix, const QVector<int>& bits);

  const NetlistBits& netlist_;
  const NetlistModule& module_;
  const ModuleIndex& index_;
  std::map<QByteArray, CutPort> ports_;
  std::map<QByteArray, CutCell> cells_;
  std::vector<char> kept_;  ///< By cell: 0 when it is cut out.
  QHash<int, char> initial_;
  std::map<QByteArray, QVector<int>> initialNets_;
  int nextBit_;
};

}  // namespace ost

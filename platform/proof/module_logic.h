// One module of a netlist as logic between its cut points: ports, pins of instances, registers and memories.
#pragma once

#include <map>
#include <unordered_map>

#include "platform/netlist/netlist_bits.h"
#include "platform/proof/word_logic.h"

namespace ost {

/// The leaves of both sides by what they stand for.
struct LeafTable {
  QList<QByteArray> names;
  QHash<QByteArray, int> numbers;
  int number(const QByteArray& name);
};

/// "state[2]"; a net of one bit by its name alone.
QByteArray bitName(const QByteArray& net, int position, int width);

bool isMemoryRead(const QByteArray& type);

/// What a register, a latch or a cut net does, of one bit. Clocks and resets are active when 1, clocks on their rising
/// edge.
struct StateFunction {
  Edge clock = kFalse;  ///< kFalse for what has no clock.
  Edge next = kUnknown;
  Edge set = kFalse, clear = kFalse, load = kFalse, loaded = kFalse;  ///< Without the clock.
};

struct StateBit {
  int cell;      ///< -1 for a net that was cut to open a loop.
  int position;  ///< In Q.
  int bit;       ///< By which it is named.
  Edge leaf = kNoEdge;
  char initial = 'x';
};

struct ModuleNet {
  QByteArray name;
  QVector<int> bits;
  bool kept = false;
};

/// A bit of a net.
struct NamedBit {
  QByteArray net;
  int position = 0;
};

struct MemoryWrite {
  Edge clock, enable, data;
  Edges address;
  int port;  ///< Its number; the later one wins where `over` says so.
};

struct ModuleMemory {
  QByteArray name;
  int width = 0, offset = 0, words = 0;
  bool isTable = false;               ///< Neither side writes to it.
  std::vector<int> initials, writes;  ///< Cells, in the order of their effect.
  std::vector<QByteArray> contents;   ///< By word, most significant bit first; empty when nothing is said.
};

class ModuleLogic {
 public:
  /// A pin of the instances of a type.
  struct PinOfType {
    QByteArray type, pin;
  };
  /// `low`: an output that counts as 0.
  ModuleLogic(LogicGraph& graph, WordLogic& words, LeafTable& leaves, const NetlistBits& netlist, int module,
              const PinOfType& low = {});

  /// What cannot be compared, or empty.
  const QString& problem() const { return problem_; }
  const NetlistModule& module() const { return module_; }
  const std::vector<ModuleNet>& nets() const { return nets_; }  ///< With names of the source's, sorted by name.
  const ModuleNet* net(const QByteArray& name) const;
  std::vector<StateBit>& states() { return states_; }
  int stateAt(int bit) const;  ///< Index into states(), or -1.
  /// The state that a bit follows through a buffer, or -1.
  int stateBehind(int bit) const;
  std::map<QByteArray, ModuleMemory>& memories() { return memories_; }
  /// Cells of instances: index into NetlistModule::instances -> the connections.
  const CellConnections& instance(int index) const { return instances_[size_t(index)]; }

  /// To be called when all states have their leaves.
  void connect();
  /// Cuts a net by its name; to be the same on both sides.
  void cut(const NamedBit& net);
  /// Cuts each loop of logic at a net whose name the other side has, too. Which nets these are.
  std::vector<NamedBit> openLoops(const ModuleLogic& other);

  Edge value(int bit);
  Edges values(const QVector<int>& bits);
  StateFunction function(const StateBit& state);
  /// The writes to bit `bit` of each word, in the order of their ports.
  std::vector<MemoryWrite> writes(const ModuleMemory& memory, int bit);
  /// True when the port `later` wins over `earlier` at the same address.
  bool hasPriority(const ModuleMemory& memory, int later, int earlier) const;

 private:
  struct Port {
    int name, first, count;
  };
  /// Of Yosys' own; names and values are indexes into texts_.
  struct Cell {
    int type, firstPort, ports, firstParameter, parameters;
    bool isBitwise;  ///< Each bit of its output depends on one bit of each operand, and a select.
  };
  struct Driver {
    enum Kind : unsigned char { None, Leaf, State, CellOutput, Several } kind = None;
    int cell = -1;     ///< Or the index of the state, or into several_.
    int position = 0;  ///< In the cell's output; of a leaf its edge.
  };
  int intern(const QByteArray& text);
  void readCells(const PinOfType& low);
  void readNets();
  void readMemories();
  void fillMemory(ModuleMemory& memory);
  static QByteArray plainMemory(QByteArray name);
  void drive(int bit, const Driver& driver);
  void driveByLeaf(int bit, const QByteArray& name);
  void noteOutputs(int cell, const QVector<int>& bits);
  void addState(int cell, const QVector<int>& bits);

  QVector<int> bits(const Cell& cell, const char* port) const;
  QVector<int> outputsOf(const Cell& cell) const;
  QByteArray parameter(const Cell& cell, const char* name) const;
  int number(const Cell& cell, const char* name) const;
  const QByteArray& typeOf(const Cell& cell) const { return texts_.at(cell.type); }

  int operand(const Cell& cell, const Port& port, int position) const;
  void inputsOf(const Driver& driver, QVector<int>& inputs) const;
  void loopSuccessors(int node, std::vector<int>& next) const;
  void compute(int bit);
  Edge computed(const Driver& driver);
  Edges evaluateCell(int index);
  Edge evaluateBit(const Driver& driver);
  Edges readMemory(const Cell& cell);

  Edge pin(const Cell& cell, const char* port, int position, Edge missing);
  Edge active(const Cell& cell, const char* port, const char* polarity, int position, Edge missing);
  StateFunction wordFunction(const Cell& cell, int position, Edge q);
  bool gateFunction(const Cell& cell, Edge q, StateFunction& result);
  void refuse(const QString& text) {
    if (problem_.isEmpty()) problem_ = text;
  }

  LogicGraph& graph_;
  WordLogic& words_;
  LeafTable& leaves_;
  const NetlistBits& netlist_;
  const NetlistModule& module_;
  QString problem_;
  QList<QByteArray> texts_;
  QHash<QByteArray, int> textNumbers_;
  std::vector<Cell> cells_;
  std::vector<Port> ports_;
  std::vector<std::pair<int, int>> parameters_;
  std::vector<int> pool_;
  std::vector<CellConnections> instances_;
  std::vector<ModuleNet> nets_;
  QHash<int, char> initial_;
  QVector<int> closedLatches_;  ///< Bits of latches that are never enabled.
  std::vector<Driver> driver_;  ///< By bit.
  std::vector<std::vector<Driver>> several_;
  std::vector<Edge> value_;
  std::vector<StateBit> states_;
  std::unordered_map<int, int> stateAt_;
  std::map<QByteArray, ModuleMemory> memories_;
  int highestBit_ = 1;
};

}  // namespace ost

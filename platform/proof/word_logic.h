// What Yosys' cells on words mean, bit by bit. Arithmetic with an unknown bit in an operand makes all bits unknown, as
// in Verilog. Products and quotients too large to be taken apart stay functions of their operands.
#pragma once

#include <QByteArray>
#include <QHash>
#include <functional>

#include "platform/proof/rails.h"

namespace ost {

/// The inputs of one cell of logic, least significant bits first.
struct WordCell {
  QByteArray type;
  std::function<Edges(const char* port)> port;
  std::function<int(const char* parameter)> number;  ///< 0 when the cell does not have it.
  std::function<QByteArray(const char* parameter)> bits;
};

/// The word with more or fewer bits, by its sign when it has one.
Edges extend(Edges a, size_t width, bool isSigned);

class WordLogic {
 public:
  WordLogic(LogicGraph& graph, RailSplitter& rails) : graph_(graph), rails_(rails) {}

  static bool isKnown(const QByteArray& type);
  /// The bits of the cell's output Y; empty when the type is not known.
  Edges evaluate(const WordCell& cell);

  /// Whether a word is below a number.
  Edge isBelow(const Edges& a, qint64 limit);
  /// The word that a table has at an address; words that it has not are unknown.
  Edges lookUp(const std::vector<Edges>& words, int width, const Edges& address);
  /// Replaces unknown bits by known ones. The result: whether one was unknown.
  Edge takeKnown(Edges& word);
  /// A number for a function of this name, see LogicGraph::function().
  int symbol(const QByteArray& name);
  const QByteArray& nameOf(int symbol) const { return names_.at(symbol); }

 private:
  Edges add(const Edges& a, const Edges& b, Edge carry, Edge* carryOut = nullptr);
  Edges multiply(const Edges& a, const Edges& b);
  void divide(const Edges& a, const Edges& b, Edges& quotient, Edges& remainder);
  Edges negate(const Edges& a, Edge when);
  Edge less(const Edges& a, const Edges& b, bool isSigned, bool orEqual);
  Edges shiftRight(const Edges& a, const Edges& amount, size_t width, Edge fill);
  Edges shiftLeft(Edges a, const Edges& amount, Edge fill);
  Edge any(const Edges& a) { return graph_.orOf(a); }
  Edges choose(Edge select, const Edges& whenSet, const Edges& whenClear);
  Edges opaque(const QByteArray& name, Edges a, const Edges& b, size_t width, bool unknown);
  Edges calculated(const WordCell& cell, Edges a, Edges b, size_t width);
  Edges compareOrCalculate(const WordCell& cell, Edges a, Edges b, size_t width);
  Edges shift(const WordCell& cell, const Edges& a, const Edges& b, size_t width);
  Edges chooseByCell(const WordCell& cell);
  Edges gate(const WordCell& cell);

  LogicGraph& graph_;
  RailSplitter& rails_;
  QHash<QByteArray, int> symbols_;
  QList<QByteArray> names_;
};

}  // namespace ost

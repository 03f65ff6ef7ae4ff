// The layout of a core that follows from its plan, computed here and nowhere else: widths, addresses and the parts of
// the configuration chain. Its Verilog is written, its size estimated and its captures read by it. docs/debug-core.md
// defines it.
#pragma once

#include <QVector>

#include "platform/plan/insert_plan.h"
#include "platform/text/numbers.h"

namespace ost {

enum class TableStore { Chain = 0, Distributed = 1, Block = 2 };

struct ExpressionLayout {
  int units = 1;     ///< Address bits of the table.
  int steps = 1;     ///< Built in.
  int stepBits = 0;  ///< State of the sequencer.
  int countBits = 0;
  TableStore store = TableStore::Chain;
  int configOffset = 0;
  int configBits = 1;   ///< Enable, last step, counts.
  int tableOffset = 0;  ///< In the chain; only with TableStore::Chain.
  int tableBits = 2;    ///< steps << units

  int rows() const { return 1 << units; }  ///< Of the table.
};

struct CoreLayout {
  int windowBits = 0;
  int positionBits = 1;
  int addressBits = 1;
  int wordBits = 1;
  int blockBits = 0;
  int eventBits = 0;
  int stepStateBits = 0;
  int rowBits = 0;  ///< Widest table row in memory; 0 without tables in memory.
  int tableAddressBits = 0;
  int statusBits = 0;
  int unitStages = 1;  ///< Sample clocks that the units take: 2 with one that compares more than 16 bits.
  int chainBits = 0;
  qint64 words = 0;
  QVector<int> unitOffsets;  ///< In the chain.
  QVector<ExpressionLayout> expressions;

  explicit CoreLayout(const PlanCore& core);

  int blockWords() const { return 1 << blockBits; }  ///< Sample words of a full block that is read out.

 private:
  void addExpression(const PlanExpression& expression, bool distRamDisabled);
};

/// Bits that a unit takes in the chain.
int unitConfigBits(const PlanUnit& unit);

/// Bits that count the bits of the longest payload word, and the words of the largest memory, of all cores.
int hubIndexBits(const InsertPlan& plan);
int hubAddressBits(const InsertPlan& plan);

}  // namespace ost

// Widths that follow from a core's plan (docs/debug-core.md, sections 2 to 4): memory words, blocks, configuration
// chain and status word.
#pragma once

#include "platform/plan/insert_plan.h"

namespace ost {

/// Bits that hold 0 .. n-1.
int bitsHolding(int n);

struct ReadLayout {
  explicit ReadLayout(const PlanCore& core);

  int words;  ///< Sample words of the memory.
  int addressBits;
  int wordBits;      ///< Sample and, with several windows, its lap bit.
  int blockWords;    ///< Words of a full reply block.
  int windowBits;    ///< Of a window's number.
  int positionBits;  ///< Of a sample's position in its window.
  int eventBits;
  int chainBits;
  int statusBits;
};

/// Rows of the expression's truth table.
inline int tableRows(const PlanExpression& expression) {
  return 1 << expression.units.size();
}
/// True when the table is part of the configuration chain; otherwise it is a memory with TABLE frames of its own.
inline bool tableIsInChain(const PlanExpression& expression) {
  return !expression.blockRam && expression.units.size() <= 4;
}

}  // namespace ost

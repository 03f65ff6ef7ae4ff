// Compares a module of the written design with its original: every output, pin, register and memory on its own.
#pragma once

#include <QSet>

#include "platform/proof/module_logic.h"
#include "platform/proof/refinement.h"

namespace ost {

/// What an insertion changes in a module on purpose.
struct ExpectedChanges {
  QSet<QByteArray> ports;                                                         ///< That the module was given.
  std::function<bool(const QByteArray& type, const QByteArray& pin)> pinIsAdded;  ///< At an instance, by its type.
  std::function<QByteArray(const QByteArray& type)> originalType;
  QByteArray debugType;  ///< Type of the one instance that may be added; empty for none.
  QByteArray lowPin;     ///< An output of that instance that is 0 while the debug module leaves the design alone.
  QVector<int> probed;   ///< Bits of the original that are looked at: their nets count as outputs.
};

struct ModuleVerdict {
  ProofOutcome outcome = ProofOutcome::Undecided;
  QString text;  ///< What differs, or why it is not known; a clause without a full stop.
};

ModuleVerdict compareModule(const NetlistBits& original, int originalModule, const NetlistBits& written,
                            int writtenModule, const ExpectedChanges& changes, const SolverLimits& limits);

}  // namespace ost

// What a core must capture, from a record of its inputs: the semantics of docs/debug-core.md, sample by sample, without
// any of the hardware's structure.
#pragma once

#include <string>
#include <vector>

#include "tests/sim/core/protocol.h"

namespace ost::sim {

/// One rising edge of the sample clock.
struct Edge {
  std::string in;  ///< Bit 0 first.
  bool sampleEnable, triggerEnable, triggerOut;
};

/// The runs of a core_env's record, each from its edge 0 on.
std::vector<std::vector<Edge>> readRecord(const std::string& fileName);

struct Capture {
  bool done = false;
  std::vector<std::vector<Bits>> windows;  ///< Sample words without lap bit, oldest first.
  std::vector<int> triggerEdges;
  std::vector<int> completions;  ///< For each expression, while looked at.
};
Capture expectedCapture(const PlanCore& core, const Settings& settings, const std::vector<Edge>& run);

/// Empty, or how the recorded trigger output differs from the one that the triggers call for.
std::string checkTriggerOut(const PlanCore& core, const Capture& capture, const std::vector<Edge>& run);

}  // namespace ost::sim

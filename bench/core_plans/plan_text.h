// Plans from a line of words, for tests and measurements of the core without a design:
//
//   "probes=32 depth=1024 unit=match:0:32 expr=0"      one core; the word "core" begins a further one
//   "wb=32"                                            a Wishbone master of 32 address bits, with or without cores
//
//   probes=N depth=N windows=N ws=N ts=N event=N        numbers of the plan; ws defaults to depth / windows
//   incl dram nodram se=high|low te=high|low out=PULSE outlow
//   unit=match|order:LSB:WIDTH, unit=serial:BIT:LENGTH  compares bits of the core's input, bit 0 being probe 0
//   expr=0+1+2[:STEPS[:COUNT]][:ebr]                    units, largest depth, largest step count
//   serdes=CLOCKS:LEVELS[:rst]                          a serdes core that watches so many
#pragma once

#include "platform/plan/insert_plan.h"

namespace ost {

/// Throws std::runtime_error that names the word it does not understand.
InsertPlan planFromText(const QByteArray& text);

/// Bits of the core's input vector: as many as probes and units need.
int inputBits(const PlanCore& core);

/// Module `core_top`: ostrel_debug on inputs c<i>_in, c<i>_clk, c<i>_sample_en, c<i>_trig_en, one input bit for each
/// different net of the plan, as the inserter wires it.
QByteArray topVerilog(const InsertPlan& plan);

}  // namespace ost

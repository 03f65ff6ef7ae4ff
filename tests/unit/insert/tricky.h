// The design that is hard to instrument and a plan for it, shared by the tests of insertion.
#pragma once

#include "platform/insert/insertion.h"
#include "tests/unit/scratch.h"

namespace ost {

/// The design, read once for all tests.
const Design& trickyDesign();
std::shared_ptr<const Netlist> trickyNetlist();

/// The net's first bit.
NetBit bitOf(const char* net);

/// One core that traces the nets whose names or places need care, and triggers on the first bit.
InsertPlan trickyPlan();

/// Inserts into the folder's "out"; a text when that fails.
std::string insertTricky(const InsertPlan& plan, const Scratch& scratch, const InsertionHooks& hooks = {});

}  // namespace ost

// The design that is hard to instrument, its probes and a plan for them, shared by the tests of insertion.
#pragma once

#include <QTemporaryDir>

#include "platform/insert/insertion.h"

namespace ost {

struct TrickyProbe {
  const char* name;     ///< As a user names it.
  const char* verilog;  ///< The same from the bench, in the source.
};
const QVector<TrickyProbe>& trickyProbes();

/// The design, read once for all tests.
const Design& trickyDesign();
std::shared_ptr<const Netlist> trickyNetlist();
NetBit bitOf(const Design& design, const char* name);
/// One core that traces trickyProbes() and triggers on the first bit.
InsertPlan trickyPlan();

/// Inserts into `folder` + "/out"; a text when that fails.
std::string insertTricky(const InsertPlan& plan, const QTemporaryDir& folder, const InsertionHooks& hooks = {});
QByteArray readFile(const QString& name);
void writeFile(const QString& name, const QByteArray& contents);

}  // namespace ost

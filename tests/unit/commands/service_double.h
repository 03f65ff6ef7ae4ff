// A double of the data service, its data classes and the libraries' reporting functions: it records every call in
// order, stores options so that they read back, and refuses or answers what a test asks for. The test program's own
// definitions stand before those of the shared libraries.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "framework/ist_com_data.h"

struct ServiceDouble {
  std::string log;  ///< "operation(arg,arg)" of every call, separated by blanks; line feeds as \n.

  bool projectOpen = true;
  bool busy = false;
  bool changed = false;
  std::string projectFile = "p.ost";
  std::vector<std::string> cores = {"c1", "c2"};  ///< The first is active, unless noActiveCore.
  bool noActiveCore = false;
  bool hasTraceAndDataset = true;
  bool hasOptionalCores = true;  ///< Wishbone master and serdes core.
  bool bigEndianOnly = false;
  std::set<std::string> used = {"t1", "t2"};   ///< Names of units and expressions.
  std::set<std::string> refused;               ///< Operations that fail.
  std::string message;                         ///< What an operation writes into an empty message.
  std::string chosenName;                      ///< What the service fills into an in-and-out name.
  std::map<std::string, std::string> answers;  ///< Of getters by name: text, number, or 1 for true.
  QList<mero::ostrel::TraceNode*> nodes;

  void record(const std::string& operation, const std::vector<std::string>& args);
  bool act(const std::string& operation, const std::vector<std::string>& args = {});
  bool act(const std::string& operation, const std::vector<std::string>& args, QString& text);
  std::string ask(const std::string& getter);
  int askNumber(const std::string& getter);
  /// Records a setter and answers `getter` with the value from now on.
  void store(const std::string& setter, const std::string& value, const std::string& getter);
};

/// The double of the running test; made afresh for each one.
extern ServiceDouble* service;

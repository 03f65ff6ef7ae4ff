// A real interpreter with the real package module, over the recording double.
#pragma once

#include <gtest/gtest.h>
#include <tcl.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "framework/tcl_cmdex.h"
#include "tests/unit/commands/service_double.h"

extern "C" int Ost_tclwrapper_Init(Tcl_Interp* interp);

/// One call and everything that must be seen of it. `log` leaves out the opening, which openings_test proves.
struct CommandCase {
  const char* script;
  std::function<void(ServiceDouble&)> prepare;
  int status;
  const char* result;
  const char* log;
};

class CommandFixture : public testing::Test {
 protected:
  CommandFixture() : interp_(nullptr) {
    static const bool ready = (Tcl_FindExecutable("unit_commands"), true);
    (void)ready;
    service = &double_;
    interp_ = Tcl_CreateInterp();
    EXPECT_EQ(TCL_OK, Ost_tclwrapper_Init(interp_));
    double_.log.clear();
  }
  ~CommandFixture() override {
    Tcl_DeleteInterp(interp_);
    service = nullptr;
  }

  /// Runs `script` on a fresh double, after `prepare`.
  int run(const std::string& script, const std::function<void(ServiceDouble&)>& prepare = nullptr) {
    double_ = ServiceDouble();
    if (prepare) prepare(double_);
    return Tcl_Eval(interp_, script.c_str());
  }
  std::string result() const { return Tcl_GetStringResult(interp_); }
  const std::string& log() const { return double_.log; }

  /// The log behind the checks and resolutions that open a command.
  std::string work() const {
    static const char* const opening[] = {"project()",   "busy()",      "active()",  "trace(c1)",
                                          "dataset(c1)", "getCore(c2)", "trace(c2)", "dataset(c2)"};
    std::string rest = double_.log;
    for (bool cut = true; cut;) {
      cut = false;
      for (const std::string step : opening) {
        if (rest.compare(0, step.size(), step) != 0) continue;
        rest.erase(0, step.size() + 1);
        cut = true;
      }
    }
    return rest;
  }

  void check(const std::vector<CommandCase>& cases) {
    for (const CommandCase& c : cases) {
      SCOPED_TRACE(c.script);
      EXPECT_EQ(c.status, run(c.script, c.prepare));
      EXPECT_EQ(c.result, result());
      EXPECT_EQ(c.log, work());
    }
  }

  /// Calls a handler as a host would that registered it itself.
  int callHandler(tcl_cmdex::TclCmdHandler handler, const std::vector<const char*>& words) {
    double_.log.clear();
    Tcl_ResetResult(interp_);
    static const tcl_cmdex::TclCmd entry;
    tcl_cmdex::CommandContext context = {&entry, mero::ostrel::IstComData::getInstance()};
    std::vector<const char*> argv(words);
    return handler(&context, interp_, static_cast<int>(argv.size()), argv.data());
  }

  ServiceDouble double_;
  Tcl_Interp* interp_;
};

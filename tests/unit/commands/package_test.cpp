// Loading the package, fit interpreter or not, and the helpers that it exports to the host tool.
#include "framework/shared_checks.h"
#include "tests/unit/commands/command_fixture.h"

namespace {

class Package : public CommandFixture {};

TEST_F(Package, ProvidesItsVersionAndServesASecondInterpreter) {
  EXPECT_EQ(TCL_OK, run("package present ost_tclwrapper"));
  EXPECT_EQ("1.1.0", result());
  Tcl_Interp* second = Tcl_CreateInterp();
  EXPECT_EQ(TCL_OK, Ost_tclwrapper_Init(second));
  double_ = ServiceDouble();
  EXPECT_EQ(TCL_OK, Tcl_Eval(second, "ost_core list"));
  EXPECT_STREQ("c1 c2", Tcl_GetStringResult(second));
  Tcl_DeleteInterp(second);
  EXPECT_EQ(TCL_OK, run("ost_core list"));
  EXPECT_EQ("c1 c2", result());
}

/// The head of an interpreter, as far as the stubs check reads it.
struct UnfitInterpreter {
  const char* result;
  void (*freeProc)(char*);
  int errorLine;
  const void* stubTable;
};

TEST_F(Package, LeavesNothingInAnUnfitInterpreter) {
  // A stubs table with the mark of a later Tcl and no function in it: any call through it would crash.
  struct {
    int magic;
    void* functions[1024];
  } later = {static_cast<int>(0xFCA3BACF + 8), {}};
  UnfitInterpreter unfit = {nullptr, nullptr, 0, &later};
  EXPECT_EQ(TCL_ERROR, Ost_tclwrapper_Init(reinterpret_cast<Tcl_Interp*>(&unfit)));
  EXPECT_EQ("", log());
  ASSERT_NE(nullptr, unfit.result);
  EXPECT_NE(std::string::npos, std::string(unfit.result).find("stubs")) << unfit.result;
}

TEST_F(Package, SharedHelpersAppendToTheResult) {
  printMessage(interp_, "one ");
  double_.projectOpen = false;
  double_.busy = true;
  EXPECT_FALSE(checkLoadedProj(interp_));
  EXPECT_TRUE(checkProjBusyStatus(interp_));
  EXPECT_EQ("one ERROR: No ostrel project is opened.ERROR: Current ostrel project is busy, please wait.", result());
  Tcl_ResetResult(interp_);
  double_.projectOpen = true;
  double_.busy = false;
  EXPECT_TRUE(checkLoadedProj(interp_));
  EXPECT_FALSE(checkProjBusyStatus(interp_));
  EXPECT_EQ("", result());
}

TEST_F(Package, PrintCmdHelpWritesPageAndRemark) {
  char name[] = "ost_core";
  const auto print = [&](bool found) {
    double_.refused.clear();
    if (!found) double_.refused.insert("hlp_help");
    double_.answers["help error"] = "E";
    double_.answers["help text"] = "T";
    double_.answers["help extra"] = "X";
    Tcl_ResetResult(interp_);
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    printCmdHelp(interp_, name);
    Tcl_Flush(Tcl_GetStdChannel(TCL_STDOUT));
    Tcl_Flush(Tcl_GetStdChannel(TCL_STDERR));
    const std::string out = testing::internal::GetCapturedStdout(), err = testing::internal::GetCapturedStderr();
    return out + "|" + err + "|" + result();
  };
  EXPECT_EQ("T|X|", print(true));
  EXPECT_EQ("T||E", print(false));
}

}  // namespace

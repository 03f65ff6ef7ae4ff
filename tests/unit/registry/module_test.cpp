// The module as a host loads it: what it leaves behind where it cannot be loaded, and the helpers that it exports.
#include <gtest/gtest.h>
#include <tcl.h>

#include <string>

#include "framework/hlp_help.h"
#include "framework/shared_checks.h"

extern "C" int Ost_tclwrapper_Init(Tcl_Interp* interp);

/// In the place of the help library: knows the page "known" only.
bool hlp_help(char* name, std::string& error, std::string& text, std::string& extra) {
  error = "E";
  text = "T";
  extra = "X";
  return std::string(name) == "known";
}

namespace {

class Module : public testing::Test {
 protected:
  Module() {
    Tcl_FindExecutable("unit_registry");
    interp_ = Tcl_CreateInterp();
    EXPECT_EQ(TCL_OK, Ost_tclwrapper_Init(interp_));
  }
  ~Module() override { Tcl_DeleteInterp(interp_); }

  Tcl_Interp* interp_;
};

TEST_F(Module, LeavesNothingInAnUnfitInterpreter) {
  // A stubs table with the mark of a later Tcl and no function in it: any call through it would crash.
  struct {
    int magic;
    void* functions[1024];
  } later = {static_cast<int>(0xFCA3BACF + 8), {}};
  // The head of an interpreter, as far as the stubs check reads it.
  struct {
    const char* result;
    void (*freeProc)(char*);
    int errorLine;
    const void* stubTable;
  } unfit = {nullptr, nullptr, 0, &later};
  EXPECT_EQ(TCL_ERROR, Ost_tclwrapper_Init(reinterpret_cast<Tcl_Interp*>(&unfit)));
  ASSERT_NE(nullptr, unfit.result);
  EXPECT_NE(std::string::npos, std::string(unfit.result).find("stubs")) << unfit.result;
}

TEST_F(Module, HelpersAppendToTheResult) {
  printMessage(interp_, "one ");
  EXPECT_FALSE(checkLoadedProj(interp_));
  EXPECT_FALSE(checkProjBusyStatus(interp_));
  EXPECT_STREQ("one ERROR: No ostrel project is opened.", Tcl_GetStringResult(interp_));
}

TEST_F(Module, PrintCmdHelpWritesPageAndRemark) {
  const auto print = [&](std::string name) {
    Tcl_ResetResult(interp_);
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    printCmdHelp(interp_, name.data());
    Tcl_Flush(Tcl_GetStdChannel(TCL_STDOUT));
    Tcl_Flush(Tcl_GetStdChannel(TCL_STDERR));
    const std::string out = testing::internal::GetCapturedStdout(), err = testing::internal::GetCapturedStderr();
    return out + "|" + err + "|" + Tcl_GetStringResult(interp_);
  };
  EXPECT_EQ("T|X|", print("known"));
  EXPECT_EQ("T||E", print("unknown"));
}

}  // namespace

// The module as a host loads it: what it registers, what it leaves behind where it cannot be loaded, and the helpers
// that it exports.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <tcl.h>

#include <fstream>
#include <iterator>
#include <sstream>

#include "framework/hlp_help.h"
#include "framework/shared_checks.h"
#include "framework/tcl_cmdex.h"

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

  /// The table as the commands themselves hold it; every command must lead to the same one.
  const tcl_cmdex::TclCmdMap& table() {
    const tcl_cmdex::TclCmdMap* table = nullptr;
    for (const char* name : {"ost_project", "ost_core", "ost_serdes", "ost_trace", "ost_tu", "ost_te"}) {
      Tcl_CmdInfo info;
      EXPECT_TRUE(Tcl_GetCommandInfo(interp_, name, &info)) << name;
      EXPECT_EQ(reinterpret_cast<void*>(info.proc), reinterpret_cast<void*>(&tcl_cmdex::TclCmdExInvoker)) << name;
      EXPECT_EQ(nullptr, info.deleteProc) << name;
      EXPECT_TRUE(!table || table == info.clientData) << name;
      table = static_cast<const tcl_cmdex::TclCmdMap*>(info.clientData);
    }
    return *table;
  }

  Tcl_Interp* interp_;
};

std::string symbolOf(tcl_cmdex::TclCmdHandler handler) {
  Dl_info info;
  if (!handler || !dladdr(reinterpret_cast<void*>(handler), &info) || !info.dli_sname) return "no handler";
  return info.dli_sname;
}

TEST_F(Module, RegistersHelpAndHandlersAsRecorded) {
  EXPECT_EQ("Ostrel Inserter", table().name);
  std::ostringstream live;
  for (const auto& command : table().commands) {
    EXPECT_EQ(nullptr, command.second.handler) << command.first;
    live << "[" << command.first << "]\n" << command.second.help;
    for (const auto& sub : command.second.subCommands) {
      EXPECT_NE(nullptr, sub.second.clientData) << sub.second.name;
      live << "[" << sub.second.name << "] " << symbolOf(sub.second.handler) << "\n" << sub.second.help;
    }
  }
  std::ifstream file(OST_COMMANDS_GOLDEN);
  const std::string golden((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  EXPECT_EQ(golden, live.str());
}

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

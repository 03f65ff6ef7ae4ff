// Walks the live command table of the loaded module: every sub-command has its handler and help as the golden file
// states them, and a row in the table from which its opening is tested.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <tcl.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>

#include "framework/tcl_cmdex.h"
#include "tests/unit/commands/openings.h"

extern "C" int Ost_tclwrapper_Init(Tcl_Interp* interp);

namespace {

class Registry : public testing::Test {
 protected:
  Registry() {
    Tcl_FindExecutable("unit_registry");
    interp_ = Tcl_CreateInterp();
    EXPECT_EQ(TCL_OK, Ost_tclwrapper_Init(interp_));
  }
  ~Registry() override { Tcl_DeleteInterp(interp_); }

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

TEST_F(Registry, HelpAndHandlersAreAsRecorded) {
  EXPECT_EQ("Ostrel Inserter", table().name);
  std::ostringstream live;
  for (const auto& command : table().commands) {
    EXPECT_EQ(nullptr, command.second.handler) << command.first;
    live << "[" << command.first << "]\n" << command.second.help;
    for (const auto& sub : command.second.subCommands)
      live << "[" << command.first << " " << sub.first << "] " << symbolOf(sub.second.handler) << "\n"
           << sub.second.help;
  }
  std::ifstream file(OST_COMMANDS_GOLDEN);
  const std::string golden((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  EXPECT_EQ(golden, live.str());
}

TEST_F(Registry, EverySubCommandHasHelpHandlerServiceAndAnOpening) {
  std::size_t found = 0;
  for (const auto& command : table().commands) {
    EXPECT_FALSE(command.second.help.empty()) << command.first;
    for (const auto& sub : command.second.subCommands) {
      const std::string name = command.first + " " + sub.first;
      ++found;
      EXPECT_NE(std::string::npos, sub.second.help.find("    " + name)) << "the help of " << name << " has no usage";
      EXPECT_NE(nullptr, sub.second.handler) << name;
      EXPECT_NE(nullptr, sub.second.clientData) << name;
      const auto rows = std::count_if(std::begin(kOpenings), std::end(kOpenings), [&](const Opening& o) {
        return command.first == o.command && sub.first == o.subCommand;
      });
      EXPECT_EQ(1, rows) << name << " needs one row in tests/unit/commands/openings.h";
    }
  }
  EXPECT_EQ(sizeof kOpenings / sizeof kOpenings[0], found) << "a row in openings.h names no sub-command";
}

}  // namespace

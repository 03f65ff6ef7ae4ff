// The module as a host loads it: what it leaves behind where it cannot be loaded, the helpers that it exports, and
// several threads of one host, of which one uses the project and the others are told so.
#include <gtest/gtest.h>
#include <tcl.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "framework/hlp_help.h"
#include "framework/shared_checks.h"

extern "C" int Ost_tclwrapper_Init(Tcl_Interp* interp);
extern "C" int Ost_platform_Init(Tcl_Interp* interp);

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

/// An interpreter of this thread with both packages.
class Shell {
 public:
  Shell() : interp_(Tcl_CreateInterp()) {
    EXPECT_EQ(TCL_OK, Ost_tclwrapper_Init(interp_));
    EXPECT_EQ(TCL_OK, Ost_platform_Init(interp_));
  }
  ~Shell() { Tcl_DeleteInterp(interp_); }
  /// What the script leaves as its result, and of an error errorCode.
  std::string shows(const char* script) {
    if (Tcl_Eval(interp_, script) == TCL_OK) return Tcl_GetStringResult(interp_);
    return std::string(Tcl_GetStringResult(interp_)) + " [" + Tcl_GetVar(interp_, "errorCode", TCL_GLOBAL_ONLY) + "]";
  }

 private:
  Tcl_Interp* const interp_;
};

/// Gives back what Tcl keeps for a thread.
struct TclThread {
  ~TclThread() { Tcl_FinalizeThread(); }
};

const char kNoProject[] = "ERROR: No ostrel project is opened. [NONE]";

std::string refused(const std::string& command) {
  return "\"" + command +
         "\" is in use on another thread: there is one project and one design for the process; use it "
         "there, or here when that thread has ended [OST THREAD]";
}

TEST(Threads, TheFirstThatCallsACommandKeepsThemUntilItEnds) {
  Tcl_FindExecutable("unit_registry");
  std::atomic<bool> called(false), done(false);
  std::thread first([&] {
    TclThread thread;
    Shell shell;
    EXPECT_EQ(kNoProject, shell.shows("ost_core list"));
    called = true;
    while (!done) std::this_thread::yield();
    EXPECT_EQ(kNoProject, shell.shows("ost_core list"));
  });
  while (!called) std::this_thread::yield();
  std::thread([&] {
    TclThread thread;
    Shell shell;
    EXPECT_EQ(refused("ost_core"), shell.shows("ost_core list"));
    EXPECT_EQ(refused("ost_design"), shell.shows("ost_design info"));
    done = true;
    first.join();
    EXPECT_EQ(kNoProject, shell.shows("ost_core list"));
  }).join();
}

TEST(Threads, LoadingAndCallingAtOnceDoesNoHarm) {
  std::atomic<int> served(0), wrong(0);
  const auto work = [&] {
    TclThread thread;
    for (int i = 0; i < 20; ++i) {
      Shell shell;
      for (const std::string command : {"ost_core", "ost_design", "ost_tu"}) {
        const std::string seen = shell.shows((command + " help").c_str());
        if (seen.find("ost_") == 0 || seen.find("usage: ") == 0)
          ++served;
        else if (seen != refused(command))
          ++wrong;
      }
    }
  };
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) threads.emplace_back(work);
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(0, wrong);
  EXPECT_GE(served, 60);  // all calls of one thread at least
}

}  // namespace

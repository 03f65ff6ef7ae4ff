// Several threads of one host that load the packages: one of them uses the project, the others are told so.
#include <gtest/gtest.h>
#include <tcl.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

extern "C" int Ost_tclwrapper_Init(Tcl_Interp* interp);
extern "C" int Ost_platform_Init(Tcl_Interp* interp);

namespace {

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

// What holds for every command: it runs on one thread, not too deep inside others, keeps its interpreter's memory, and
// whatever it throws becomes the interpreter's error.
#include <sys/mman.h>

#include <cstdio>
#include <exception>
#include <mutex>
#include <new>

#include "platform/system/interrupt.h"
#include "platform/tclcmdex/call_record.h"
#include "platform/tclcmdex/host.h"
#include "platform/tclcmdex/tcl_access.h"

namespace tcl_cmdex {

namespace {

constexpr int kDeepestNesting = 64;  ///< Of commands inside one another; each takes some of the stack.

/// Keeps the interpreter's memory while a command runs that may delete it (`interp delete {}` from a served event).
class InterpreterHold {
 public:
  explicit InterpreterHold(Tcl_Interp* interp) : interp_(interp) { Tcl_Preserve(interp_); }
  ~InterpreterHold() { Tcl_Release(interp_); }
  InterpreterHold(const InterpreterHold&) = delete;
  InterpreterHold& operator=(const InterpreterHold&) = delete;

 private:
  Tcl_Interp* const interp_;
};

/// Address space that is given back when memory has ended: Tcl, which ends the process when it gets none, can then
/// take up the error. Its pages are never touched.
class Reserve {
 public:
  void fill() {
    if (pages_ == MAP_FAILED)
      pages_ = mmap(nullptr, kBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  }
  void release() {
    if (pages_ != MAP_FAILED) munmap(pages_, kBytes);
    pages_ = MAP_FAILED;
  }

 private:
  static constexpr std::size_t kBytes = std::size_t(4) << 20;
  void* pages_ = MAP_FAILED;
};
Reserve reserve;

/// The thread whose commands are carried out: the first that called one, until it ends.
std::mutex ownerLock;
bool hasOwner = false;
struct Membership {
  bool owner = false;
  ~Membership() {
    if (!owner) return;
    const std::lock_guard<std::mutex> lock(ownerLock);
    hasOwner = false;
  }
};
thread_local Membership membership;

bool threadMayCall() {
  if (membership.owner) return true;
  const std::lock_guard<std::mutex> lock(ownerLock);
  if (hasOwner) return false;
  return hasOwner = membership.owner = true;
}

/// Reports with hardly any memory: `format` is about the name of the command, and the text is cut where it is long.
int refuse(Tcl_Interp* interp, const char* format, const char* name, const char* code) {
  char text[200];  // Tcl has a place of this size for results in the interpreter itself.
  std::snprintf(text, sizeof text, format, name);
  Tcl_SetResult(interp, text, TCL_VOLATILE);
  Tcl_SetErrorCode(interp, "OST", code, static_cast<char*>(nullptr));
  return TCL_ERROR;
}

int reportInternalError(Tcl_Interp* interp, const std::string& name, const char* text) {
  setResult(interp, "internal error in \"" + name + "\": " + text);
  setErrorCodeWords(interp, "OST", "INTERNAL", name);
  return TCL_ERROR;
}

/// Everything that is thrown, but for the end of memory.
int runToItsEnd(Tcl_Interp* interp, const CallRecord& record, int (*body)(void*), void* data) {
  try {
    return body(data);
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& failure) {
    return reportInternalError(interp, record.name, failure.what());
  } catch (...) {
    return reportInternalError(interp, record.name, "an exception without a text");
  }
}

int runOnThisThread(Tcl_Interp* interp, const char* name, int (*body)(void*), void* data) {
  if (!threadMayCall())
    return refuse(interp,
                  "\"%.40s\" is in use on another thread: there is one project and one design for the process; use it "
                  "there, or here when that thread has ended",
                  name, "THREAD");
  if (dispatchDepth() >= kDeepestNesting)
    return refuse(interp, "\"%.40s\" is not run: too many commands call each other by their output or events", name,
                  "NESTING");
  InterpreterHold hold(interp);
  CallRecord record(interp, name);
  if (record.depth() == 1) reserve.fill();
  try {
    return runToItsEnd(interp, record, body, data);
  } catch (const std::bad_alloc&) {
    reserve.release();
    return refuse(interp, "out of memory: \"%.100s\" was not completed", record.name, "MEMORY");
  }
}

}  // namespace

int runGuarded(Tcl_Interp* interp, const char* name, int (*body)(void*), void* data) {
  if (!tclIsReady(interp)) return TCL_ERROR;
  const int status = runOnThisThread(interp, name, body, data);
  const int signal = ost::InterruptScope::signal();
  if (!signal || dispatchDepth() > 0 || !membership.owner) return status;
  // All is in order. Exit handlers give up locks, and whoever waits for the process sees the signal.
  ost::InterruptScope::endBy(signal);
  Tcl_Exit(128 + signal);
  return status;
}

int dispatchDepth() {
  const CallRecord* record = CallRecord::innermost();
  return record != nullptr ? record->depth() : 0;
}

Tcl_Interp* currentInterpreter() {
  const CallRecord* record = CallRecord::innermost();
  return record != nullptr ? record->interp : nullptr;
}

}  // namespace tcl_cmdex

// What is known about each command being dispatched right now: a stack, because a long command serves events that
// may run further commands.
#pragma once

#include <tcl.h>

#include <string>

namespace tcl_cmdex {

/// One running dispatch; lives on the dispatcher's stack and links itself in and out.
class CallRecord {
 public:
  CallRecord(Tcl_Interp* interp, const char* name);
  ~CallRecord();
  CallRecord(const CallRecord&) = delete;
  CallRecord& operator=(const CallRecord&) = delete;

  /// The innermost running dispatch of this thread; null outside of any.
  static CallRecord* innermost();

  /// How many are running, this one among them.
  int depth() const { return depth_; }

  Tcl_Interp* const interp;
  const char* name;  ///< For errors: as typed, or of the entry as soon as it is found.
  /// Why the words of this call were refused, as far as the parser knows; empty when only the handler can tell.
  std::string reason;

 private:
  CallRecord* const outer_;
  const int depth_;
};

/// Remembers `reason` for the running call; outside of any call there is no one to tell.
void noteReason(std::string reason);
/// Hands over the reason of the running call and forgets it.
std::string takeReason();

}  // namespace tcl_cmdex

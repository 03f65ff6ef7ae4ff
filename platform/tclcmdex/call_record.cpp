// The stack of running dispatches.
#include "platform/tclcmdex/call_record.h"

#include <utility>

namespace tcl_cmdex {

namespace {
thread_local CallRecord* innermostRecord = nullptr;
}

CallRecord::CallRecord(Tcl_Interp* interpreter, const char* calledName)
    : interp(interpreter),
      name(calledName),
      outer_(innermostRecord),
      depth_(innermostRecord != nullptr ? innermostRecord->depth_ + 1 : 1) {
  innermostRecord = this;
}

CallRecord::~CallRecord() {
  innermostRecord = outer_;
}

CallRecord* CallRecord::innermost() {
  return innermostRecord;
}

void noteReason(std::string reason) {
  if (innermostRecord != nullptr) innermostRecord->reason = std::move(reason);
}

std::string takeReason() {
  std::string reason;
  if (innermostRecord != nullptr) reason.swap(innermostRecord->reason);
  return reason;
}

}  // namespace tcl_cmdex

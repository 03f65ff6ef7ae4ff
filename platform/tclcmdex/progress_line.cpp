// Where the line of progress is written, and when.
#include "platform/tclcmdex/progress_line.h"

#include <unistd.h>

#include "platform/tclcmdex/host.h"
#include "platform/tclcmdex/tcl_access.h"

namespace tcl_cmdex {
namespace {

constexpr double kSilence = 20, kRefresh = 1;  // seconds

}  // namespace

ProgressLine::ProgressLine(const std::string& stage)
    : stage_(stage),
      terminal_(sinkIsStdout() && isatty(STDOUT_FILENO)),
      begun_(std::chrono::steady_clock::now()),
      said_(begun_) {}

ProgressLine::~ProgressLine() {
  clear();
}

double ProgressLine::secondsSince(std::chrono::steady_clock::time_point then) const {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - then).count();
}

void ProgressLine::clear() {
  if (shown_) TclMsgOutput(currentInterpreter(), ('\r' + std::string(shown_, ' ') + '\r').c_str(), 0);
  shown_ = 0;
}

void ProgressLine::say(const std::string& line) {
  clear();
  TclMsgOutput(currentInterpreter(), (line + '\n').c_str(), 0);
  said_ = std::chrono::steady_clock::now();
}

void ProgressLine::setStage(const std::string& stage) {
  stage_ = stage;
  begun_ = std::chrono::steady_clock::now();
}

bool ProgressLine::tick() {
  if (secondsSince(said_) >= (terminal_ ? kRefresh : kSilence)) {
    const std::string line = stage_ + ", " + std::to_string(int(secondsSince(begun_))) + " s";
    if (terminal_) {
      clear();
      shown_ = line.size();
      TclMsgOutput(currentInterpreter(), line.c_str(), 0);
      said_ = std::chrono::steady_clock::now();
    } else {
      say(line + '.');
    }
  }
  return servePendingEvents();
}

}  // namespace tcl_cmdex

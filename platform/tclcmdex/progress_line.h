// What a long task says while it works: whole lines, and what is under way with its time.
#pragma once

#include <chrono>
#include <string>

#include "framework/tcl_cmdex.h"
#include "platform/system/interrupt.h"

namespace tcl_cmdex {

/// On a terminal what is under way stands in the last line and is written anew each second; elsewhere it becomes a line
/// of its own when nothing was said for 20 s. While one lives, a signal that would end the process ends the task first.
class TCLCMDEX_API ProgressLine {
 public:
  /// `stage`: what is under way, for example "Reading the design".
  explicit ProgressLine(const std::string& stage);
  ~ProgressLine();
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;

  /// Prints a line, without its line feed.
  void say(const std::string& line);
  void setStage(const std::string& stage);
  /// To be called often. Serves the events that are pending; false when the task should end, as servePendingEvents().
  bool tick();

 private:
  void clear();
  double secondsSince(std::chrono::steady_clock::time_point then) const;

  const ost::InterruptScope interrupts_;
  std::string stage_;
  bool terminal_;
  size_t shown_ = 0;  ///< Characters of the line that is written anew.
  std::chrono::steady_clock::time_point begun_, said_;
};

}  // namespace tcl_cmdex

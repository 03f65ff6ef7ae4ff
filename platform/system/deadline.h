// A point in time by which something must be finished.
#pragma once

#include <chrono>

namespace ost {

class Deadline {
 public:
  using Clock = std::chrono::steady_clock;
  explicit Deadline(double seconds)
      : end_(Clock::now() + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds))) {}
  double left() const { return std::chrono::duration<double>(end_ - Clock::now()).count(); }  ///< Seconds.
  bool isOver() const { return left() <= 0; }

 private:
  Clock::time_point end_;
};

}  // namespace ost

// The process between us and a program that we run. It alone waits for the program, so that the host's handling of its
// own children does not matter, and it ends all that the program has started, whatever becomes of us.
#pragma once

#include <sys/types.h>

namespace ost {

constexpr int kMostChildFiles = 16;

/// What both processes need, laid out before the fork: after it nothing may be allocated.
struct Launch {
  char* const* words = nullptr;            ///< The program and its arguments, closed by a null.
  const char* workingDirectory = nullptr;  ///< Null: the current one.
  int input = -1, output = -1, error = -1, report = -1, control = -1;
  const int* files = nullptr;  ///< Become 3, 4, ...
  int fileCount = 0;
  const int* kept = nullptr;  ///< All of the above in ascending order; every other descriptor is closed first.
  int keptCount = 0;
  long long memoryLimit = 0;
  pid_t parent = 0;
};

/// A record of the report pipe: the first one counts. Without any, how the program ended is unknown.
struct Report {
  enum Kind : int { Status, NotPrepared, NoFolder, NotStarted };
  Kind kind;
  int code;  ///< As wait() gives it, or an errno.
};

/// A fork whose end is invisible to the host's handlers, settings and waits, unless `endSignal` is SIGCHLD. The new
/// process may only call what a signal handler may.
pid_t plainFork(int endSignal);

/// The supervisor: runs the program until it ends, `control` is closed or the parent dies; then kills what is left of
/// its descendants and reports. All signals are to be blocked before the fork.
[[noreturn]] void supervise(const Launch& launch);

}  // namespace ost

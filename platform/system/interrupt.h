// Signals that end a process, as a question: what has something to put in order looks for them where it waits.
#pragma once

namespace ost {

/// From now on the first SIGINT or SIGTERM is only remembered; the second one ends the process. False with errno.
bool catchInterrupts();

/// Whether one came since the last call of catchInterrupts().
bool isInterrupted();

/// While one lives, SIGINT, SIGTERM and SIGHUP are remembered instead of ending the process, each once. Those that the
/// process handles or ignores are left to it. Scopes may be nested, on one thread.
class InterruptScope {
 public:
  InterruptScope();
  ~InterruptScope();
  InterruptScope(const InterruptScope&) = delete;
  InterruptScope& operator=(const InterruptScope&) = delete;

  /// The first signal that came within a scope, or 0; it remains when the scope is over.
  static int signal();
  /// When the process has exited in order, it is to end by the signal: whoever waits for it sees that one.
  static void endBy(int signal);
};

}  // namespace ost

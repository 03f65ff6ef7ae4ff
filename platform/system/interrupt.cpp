// One flag, set by the handler.
#include "platform/system/interrupt.h"

#include <signal.h>

#include <cstdlib>

namespace ost {
namespace {

constexpr int kEnding[] = {SIGINT, SIGTERM, SIGHUP};

volatile sig_atomic_t interrupts = 0;
int scopes = 0;
int lastSignal = 0;

void remember(int number) {
  if (!interrupts) interrupts = number;
}

struct sigaction remembering() {
  struct sigaction action = {};
  action.sa_handler = remember;
  action.sa_flags = static_cast<int>(SA_RESETHAND | SA_RESTART);
  sigemptyset(&action.sa_mask);
  return action;
}

/// Registered when this library is loaded, so that it comes after what was made later: locks, staged folders.
const int atEnd = std::atexit([] {
  if (!lastSignal) return;
  ::signal(lastSignal, SIG_DFL);
  raise(lastSignal);
});

}  // namespace

bool catchInterrupts() {
  interrupts = 0;
  const struct sigaction action = remembering();
  return sigaction(SIGINT, &action, nullptr) == 0 && sigaction(SIGTERM, &action, nullptr) == 0;
}

bool isInterrupted() {
  return interrupts != 0;
}

InterruptScope::InterruptScope() {
  if (scopes++ > 0) return;
  for (const int number : kEnding) {
    struct sigaction before;
    const struct sigaction action = remembering();
    const bool ends =
        sigaction(number, nullptr, &before) == 0 && !(before.sa_flags & SA_SIGINFO) && before.sa_handler == SIG_DFL;
    if (ends) sigaction(number, &action, nullptr);
  }
}

InterruptScope::~InterruptScope() {
  if (--scopes > 0) return;
  for (const int number : kEnding) {
    struct sigaction now;
    // What somebody else has set meanwhile is theirs.
    if (sigaction(number, nullptr, &now) == 0 && now.sa_handler == remember) ::signal(number, SIG_DFL);
  }
}

int InterruptScope::signal() {
  return interrupts;
}

void InterruptScope::endBy(int signal) {
  lastSignal = signal;
}

}  // namespace ost

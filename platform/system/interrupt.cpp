// One flag, set by the handler.
#include "platform/system/interrupt.h"

#include <signal.h>

namespace ost {
namespace {

volatile sig_atomic_t interrupts = 0;

void remember(int) {
  interrupts = 1;
}

}  // namespace

bool catchInterrupts() {
  interrupts = 0;
  struct sigaction action = {};
  action.sa_handler = remember;
  action.sa_flags = static_cast<int>(SA_RESETHAND);
  sigemptyset(&action.sa_mask);
  return sigaction(SIGINT, &action, nullptr) == 0 && sigaction(SIGTERM, &action, nullptr) == 0;
}

bool isInterrupted() {
  return interrupts != 0;
}

}  // namespace ost

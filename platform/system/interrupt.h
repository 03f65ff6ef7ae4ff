// ^C as a question: a program that has something to put in order looks for it where it waits.
#pragma once

namespace ost {

/// From now on the first SIGINT or SIGTERM is only remembered; the second one ends the process. False with errno.
bool catchInterrupts();

/// Whether one came since the last call of catchInterrupts().
bool isInterrupted();

}  // namespace ost

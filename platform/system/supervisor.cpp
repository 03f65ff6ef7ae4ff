// The supervisor and its program, between fork and exec. Only async-signal-safe functions are called here.
#include "platform/system/supervisor.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/signalfd.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>

namespace ost {
namespace {

constexpr int kKillRounds = 200;  // Of 10 ms each, while a child cannot be found or killed.

void closeRange(unsigned first, unsigned last) {
  if (first > last) return;
#ifdef SYS_close_range
  if (syscall(SYS_close_range, first, last, 0u) == 0) return;
#endif
  const long limit = sysconf(_SC_OPEN_MAX);
  for (unsigned fd = first; fd <= last && long(fd) < limit; ++fd) close(int(fd));
}

/// `kept` is in ascending order; duplicates and -1 do no harm.
void closeAllBut(const int* kept, int count) {
  unsigned next = 0;
  for (int i = 0; i < count; ++i) {
    if (kept[i] < int(next)) continue;
    if (kept[i] > 0) closeRange(next, unsigned(kept[i]) - 1);
    next = unsigned(kept[i]) + 1;
  }
  closeRange(next, ~0u);
}

[[noreturn]] void giveUp(int report, Report::Kind kind, int code) {
  const Report record = {kind, code};
  if (write(report, &record, sizeof record) < 0) _exit(126);  // A missing record counts as a failure, too.
  _exit(127);
}

void restoreSignals() {
  struct sigaction action;
  memset(&action, 0, sizeof action);
  action.sa_handler = SIG_DFL;
  for (int number = 1; number < NSIG; ++number) sigaction(number, &action, nullptr);  // some cannot be set
}

bool limitTo(int resource, rlim_t value) {
  rlimit limit;
  if (getrlimit(resource, &limit) != 0) return false;
  if (limit.rlim_max != RLIM_INFINITY && limit.rlim_max < value) value = limit.rlim_max;
  limit.rlim_cur = limit.rlim_max = value;
  return setrlimit(resource, &limit) == 0;
}

/// A copy of the descriptor at `lowest` or above, closed by exec. -1 with errno.
int moveAbove(int lowest, int fd) {
  const int copy = fcntl(fd, F_DUPFD_CLOEXEC, lowest);
  if (copy < 0 && errno == EINVAL) errno = EMFILE;  // The limit is below `lowest`.
  return copy;
}

/// Puts the descriptors in their places, 0 to 2 and the files from 3 on, and closes all others but `report`, which is
/// above. False with errno.
bool placeDescriptors(const Launch& launch, int report) {
  const int places = 3 + launch.fileCount;
  int moved[3 + kMostChildFiles];
  // First they are moved out of the way, so that none is overwritten before it is placed.
  const int input = launch.input >= 0 ? launch.input : open("/dev/null", O_RDONLY | O_CLOEXEC);
  for (int i = 0; i < places; ++i) {
    const int fd = i == 0 ? input : i == 1 ? launch.output : i == 2 ? launch.error : launch.files[i - 3];
    moved[i] = moveAbove(places, fd);
    if (moved[i] < 0) return false;
  }
  for (int i = 0; i < places; ++i)
    if (dup2(moved[i], i) < 0) return false;
  closeRange(unsigned(places), unsigned(report) - 1);
  closeRange(unsigned(report) + 1, ~0u);
  return true;
}

[[noreturn]] void becomeProgram(const Launch& launch, pid_t supervisor) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != supervisor) _exit(127);  // It died before the line above took effect.
  setpgid(0, 0);
  const int report = moveAbove(3 + launch.fileCount, launch.report);  // Closes itself when the program starts.
  if (report < 0) giveUp(launch.report, Report::NotPrepared, errno);
  if (!placeDescriptors(launch, report)) giveUp(report, Report::NotPrepared, errno);
  const bool limited =
      limitTo(RLIMIT_CORE, 0) && (launch.memoryLimit <= 0 || limitTo(RLIMIT_AS, rlim_t(launch.memoryLimit)));
  if (!limited) giveUp(report, Report::NotPrepared, errno);
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
#ifdef __SANITIZE_ADDRESS__
  unsetenv("LD_PRELOAD");  // A preloaded sanitizer cannot reserve its shadow below the memory limit.
#endif
  if (launch.workingDirectory && chdir(launch.workingDirectory) != 0) giveUp(report, Report::NoFolder, errno);
  execvp(launch.words[0], launch.words);
  giveUp(report, Report::NotStarted, errno);
}

/// The parent of a process out of /proc/<pid>/stat, or -1.
pid_t parentOf(int proc, const char* pid) {
  char name[32], text[512];
  if (snprintf(name, sizeof name, "%s/stat", pid) >= int(sizeof name)) return -1;
  const int file = openat(proc, name, O_RDONLY | O_CLOEXEC);
  const ssize_t size = file < 0 ? -1 : read(file, text, sizeof text - 1);
  if (file >= 0) close(file);
  if (size <= 0) return -1;
  text[size] = '\0';
  const char* end =
      strrchr(text, ')');  // Of the program's name, which may contain anything. It is followed by " S 123 ...".
  return end && strlen(end) > 4 ? pid_t(atoi(end + 4)) : -1;
}

/// Kills the children of this process; how many it could.
int killChildren() {
  struct Entry {  // As the kernel writes it; the name is null-terminated.
    unsigned long long inode, offset;
    unsigned short length;
    unsigned char type;
    char name[1];
  };
  alignas(Entry) char buffer[4096];
  const pid_t self = getpid();
  const int proc = open("/proc", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  int killed = 0;
  for (long size; proc >= 0 && (size = syscall(SYS_getdents64, proc, buffer, sizeof buffer)) > 0;) {
    for (long at = 0; at < size;) {
      const Entry* entry = reinterpret_cast<const Entry*>(buffer + at);
      const char* name = buffer + at + offsetof(Entry, name);
      at += entry->length;
      if (*name < '0' || *name > '9' || parentOf(proc, name) != self) continue;
      killed += kill(pid_t(atoi(name)), SIGKILL) == 0;
    }
  }
  if (proc >= 0) close(proc);
  return killed;
}

/// Ends all descendants: those whose parents are gone have become children of this process.
void endAll(pid_t program, int& status) {
  for (int idle = 0; idle < kKillRounds;) {
    int end;
    const pid_t gone = waitpid(-1, &end, WNOHANG);
    if (gone < 0) return;
    if (gone == program) status = end;
    if (gone > 0) continue;
    if (killChildren() == 0) ++idle;
    const timespec pause = {0, idle ? 10000000 : 200000};
    nanosleep(&pause, nullptr);
  }
}

}  // namespace

pid_t plainFork(int endSignal) {
  return pid_t(syscall(SYS_clone, endSignal, 0, 0, 0, 0));
}

void supervise(const Launch& launch) {
  closeAllBut(launch.kept, launch.keptCount);  // First of all: locks of a parent that dies now must not be kept alive.
  restoreSignals();
  prctl(PR_SET_PDEATHSIG, SIGTERM);
  if (getppid() != launch.parent) _exit(127);
  setpgid(0, 0);
  sigset_t watched;
  sigemptyset(&watched);
  sigaddset(&watched, SIGCHLD);
  sigaddset(&watched, SIGTERM);
  const int signals = signalfd(-1, &watched, SFD_CLOEXEC | SFD_NONBLOCK);
  if (signals < 0 || prctl(PR_SET_CHILD_SUBREAPER, 1) != 0) giveUp(launch.report, Report::NotPrepared, errno);

  const pid_t self = getpid();
  const pid_t program = plainFork(SIGCHLD);
  if (program < 0) giveUp(launch.report, Report::NotPrepared, errno);
  if (program == 0) becomeProgram(launch, self);
  int mine[] = {launch.report, launch.control, signals};
  std::sort(mine, mine + 3);
  closeAllBut(mine, 3);

  int status = SIGKILL;  // As wait() reports it, if it does not end by itself.
  for (bool running = true; running;) {
    pollfd events[] = {{launch.control, POLLIN, 0}, {signals, POLLIN, 0}};
    if (poll(events, 2, -1) < 0 && errno != EINTR) break;
    if (events[0].revents)
      break;  // Nothing is ever written there: its end means that the caller has closed it or died.
    signalfd_siginfo info;
    while (read(signals, &info, sizeof info) == ssize_t(sizeof info)) running &= info.ssi_signo != SIGTERM;
    int end;
    for (pid_t gone; (gone = waitpid(-1, &end, WNOHANG)) > 0;) {
      if (gone != program) continue;
      status = end;
      running = false;
    }
  }
  endAll(program, status);
  const Report record = {Report::Status, status};
  _exit(write(launch.report, &record, sizeof record) == ssize_t(sizeof record) ? 0 : 126);
}

}  // namespace ost

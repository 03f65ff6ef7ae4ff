// The child process: fork, limits, exec, and a poll loop that serves the caller. QProcess is not used: it would put a
// SIGCHLD handler of its own beside Tcl's processes, and has no hook for limits on all Qt versions.
#include "platform/system/child_process.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <vector>

namespace ost {
namespace {

constexpr int kPollMilliseconds = 40;  // Idle is promised ten times a second at least.
constexpr int kErrorHead = 64 * 1024;
constexpr int kErrorTail = 8 * 1024;

struct Pipe {
  int read = -1, write = -1;
  bool open() {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return false;
    read = ends[0];
    write = ends[1];
    return true;
  }
  static void shut(int& end) {
    if (end >= 0) close(end);
    end = -1;
  }
  ~Pipe() {
    shut(read);
    shut(write);
  }
};

// Everything the child needs between fork and exec, where nothing may be allocated.
struct Launch {
  std::vector<char*> words;
  const char* workingDirectory;
  int input, output, error, status;
  const int* files;
  int fileCount;
  qint64 memoryLimit;
  pid_t parent;
  int descriptorLimit;
};

void closeFrom(int first, int limit) {
#ifdef SYS_close_range
  if (syscall(SYS_close_range, static_cast<unsigned>(first), ~0u, 0u) == 0) return;
#endif
  for (int fd = first; fd < limit; ++fd) close(fd);
}

[[noreturn]] void becomeChild(const Launch& launch) {
  setpgid(0, 0);
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != launch.parent) _exit(127);  // The parent died before the line above took effect.

  // Descriptors first move out of the way, so that none is overwritten before it is placed.
  const int high = 3 + launch.fileCount + 1;
  const int status = fcntl(launch.status, F_DUPFD_CLOEXEC, high);
  const int input = launch.input >= 0 ? fcntl(launch.input, F_DUPFD, high) : open("/dev/null", O_RDONLY);
  const int output = fcntl(launch.output, F_DUPFD, high), error = fcntl(launch.error, F_DUPFD, high);
  int moved[16];
  for (int i = 0; i < launch.fileCount; ++i) moved[i] = fcntl(launch.files[i], F_DUPFD, high);
  dup2(input, 0);
  dup2(output, 1);
  dup2(error, 2);
  for (int i = 0; i < launch.fileCount; ++i) dup2(moved[i], 3 + i);
  const int statusPlace = 3 + launch.fileCount;
  dup2(status, statusPlace);
  fcntl(statusPlace, F_SETFD, FD_CLOEXEC);
  closeFrom(statusPlace + 1, launch.descriptorLimit);

  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  signal(SIGPIPE, SIG_DFL);
  signal(SIGINT, SIG_DFL);
  signal(SIGTERM, SIG_DFL);
  rlimit limit;
  limit.rlim_cur = limit.rlim_max = 0;
  setrlimit(RLIMIT_CORE, &limit);
  if (launch.memoryLimit > 0) {
    limit.rlim_cur = limit.rlim_max = static_cast<rlim_t>(launch.memoryLimit);
    setrlimit(RLIMIT_AS, &limit);
  }
#ifdef __SANITIZE_ADDRESS__
  unsetenv("LD_PRELOAD");  // A preloaded sanitizer cannot reserve its shadow below the memory limit.
#endif
  if (!launch.workingDirectory || chdir(launch.workingDirectory) == 0) execvp(launch.words[0], launch.words.data());
  const int reason = errno;
  if (write(statusPlace, &reason, sizeof reason) < 0) _exit(126);
  _exit(127);
}

// Reads what is there. False at the end of the stream.
bool drain(int fd, const std::function<void(const char*, int)>& take) {
  char buffer[16 * 1024];
  const ssize_t count = read(fd, buffer, sizeof buffer);
  if (count > 0) take(buffer, static_cast<int>(count));
  return count > 0 || (count < 0 && (errno == EINTR || errno == EAGAIN));
}

}  // namespace

ChildEnd runChild(const ChildJob& job) {
  ChildEnd end;
  Pipe output, error, status;
  if (job.files.size() > 16 || !output.open() || !error.open() || !status.open()) {
    end.code = errno;
    return end;
  }
  Launch launch;
  launch.words.push_back(const_cast<char*>(job.program.constData()));
  for (const QByteArray& word : job.arguments) launch.words.push_back(const_cast<char*>(word.constData()));
  launch.words.push_back(nullptr);
  launch.workingDirectory = job.workingDirectory.isEmpty() ? nullptr : job.workingDirectory.constData();
  launch.input = job.inputFile;
  launch.output = output.write;
  launch.error = error.write;
  launch.status = status.write;
  launch.files = job.files.constData();
  launch.fileCount = job.files.size();
  launch.memoryLimit = job.memoryLimitBytes;
  launch.parent = getpid();
  launch.descriptorLimit = static_cast<int>(sysconf(_SC_OPEN_MAX));

  const pid_t child = fork();
  if (child < 0) {
    end.code = errno;
    return end;
  }
  if (child == 0) becomeChild(launch);
  setpgid(child, child);  // Both sides set it: whoever comes first.
  Pipe::shut(output.write);
  Pipe::shut(error.write);
  Pipe::shut(status.write);

  int startError = 0;
  ssize_t got;
  do got = read(status.read, &startError, sizeof startError);
  while (got < 0 && errno == EINTR);

  const auto started = std::chrono::steady_clock::now();
  const auto deadline = started + std::chrono::seconds(qMax(1, job.timeLimitSeconds));
  ChildEnd::How reason = ChildEnd::Exited;
  bool ended = false;
  const auto takeError = [&end](const char* data, int count) {
    const int room = qMin(count, kErrorHead - end.firstError.size());
    end.firstError.append(data, room);
    end.lastError.append(data + room, count - room);
    if (end.lastError.size() > 4 * kErrorTail) end.lastError = end.lastError.right(kErrorTail);
  };
  auto lastIdle = started - std::chrono::seconds(1);
  while (!ended || output.read >= 0 || error.read >= 0) {
    pollfd watched[2] = {{output.read, POLLIN, 0}, {error.read, POLLIN, 0}};
    const bool silent = output.read < 0 && error.read < 0;
    const int ready = poll(watched, 2, ended ? 0 : silent ? 2 : kPollMilliseconds);
    if (ready > 0 && watched[0].revents &&
        !drain(output.read, [&end](const char* data, int count) { end.output.append(data, count); })) {
      Pipe::shut(output.read);
    }
    if (ready > 0 && watched[1].revents && !drain(error.read, takeError)) Pipe::shut(error.read);
    // A descendant may hold the pipes open: once the child has gone, what is there is all that counts.
    if (ended && ready <= 0) break;
    siginfo_t info = {};
    if (!ended) ended = waitid(P_PID, child, &info, WEXITED | WNOHANG | WNOWAIT) != 0 || info.si_pid == child;
    const auto now = std::chrono::steady_clock::now();
    if (ended || reason != ChildEnd::Exited) continue;
    if (now >= deadline) {
      reason = ChildEnd::OutOfTime;
    } else if (job.idle && now - lastIdle >= std::chrono::milliseconds(kPollMilliseconds)) {
      if (!job.idle()) reason = ChildEnd::Cancelled;
      lastIdle = std::chrono::steady_clock::now();
    }
    if (reason != ChildEnd::Exited) kill(-child, SIGKILL);
  }
  // Descendants that it left behind; the child is not reaped yet, so the number still means its group.
  kill(-child, SIGKILL);
  int waited = 0;
  while (waitpid(child, &waited, 0) < 0 && errno == EINTR) continue;

  if (got == sizeof startError) {
    end.how = ChildEnd::NotStarted;
    end.code = startError;
  } else if (reason != ChildEnd::Exited) {
    end.how = reason;
  } else if (WIFSIGNALED(waited)) {
    end.how = ChildEnd::Killed;
    end.code = WTERMSIG(waited);
  } else {
    end.how = ChildEnd::Exited;
    end.code = WEXITSTATUS(waited);
  }
  return end;
}

}  // namespace ost

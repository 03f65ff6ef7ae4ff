// The caller's side of a child process: the pipes, the fork, and a poll loop that serves the caller. QProcess is not
// used: it would put a SIGCHLD handler of its own beside Tcl's processes, and has no hook for limits on all Qt
// versions.
#include "platform/system/child_process.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <vector>

#include "platform/system/descriptor.h"
#include "platform/system/supervisor.h"

namespace ost {
namespace {

constexpr int kPollMilliseconds = 40;  // Idle is promised ten times a second at least.
constexpr int kErrorHead = 64 * 1024;
constexpr int kErrorTail = 8 * 1024;
constexpr int kMostFiles = 16;

struct Pipe {
  Descriptor read, write;
  bool open() {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return false;
    read.reset(ends[0]);
    write.reset(ends[1]);
    return true;
  }
};

/// The supervisor of one job; it ends, with all that it watches, when its control pipe is closed.
class Supervisor {
 public:
  ~Supervisor() {
    stop();
    while (pid_ > 0 && waitpid(pid_, nullptr, __WALL) < 0 && errno == EINTR) continue;
  }
  /// False with errno.
  bool start(const ChildJob& job);
  void stop() { control_.reset(); }

  Descriptor output, error, report;

 private:
  Descriptor control_;
  pid_t pid_ = -1;
};

bool Supervisor::start(const ChildJob& job) {
  Pipe out, err, end, control;
  if (job.files.size() > kMostFiles) {
    errno = E2BIG;
    return false;
  }
  if (!out.open() || !err.open() || !end.open() || !control.open()) return false;
  std::vector<char*> words{const_cast<char*>(job.program.constData())};
  for (const QByteArray& word : job.arguments) words.push_back(const_cast<char*>(word.constData()));
  words.push_back(nullptr);
  Launch launch;
  launch.words = words.data();
  launch.workingDirectory = job.workingDirectory.isEmpty() ? nullptr : job.workingDirectory.constData();
  launch.input = job.inputFile;
  launch.output = out.write.fd();
  launch.error = err.write.fd();
  launch.report = end.write.fd();
  launch.control = control.read.fd();
  launch.files = job.files.constData();
  launch.fileCount = job.files.size();
  launch.memoryLimit = job.memoryLimitBytes;
  launch.parent = getpid();
  std::vector<int> kept(job.files.begin(), job.files.end());
  kept.insert(kept.end(), {launch.input, launch.output, launch.error, launch.report, launch.control});
  std::sort(kept.begin(), kept.end());
  launch.kept = kept.data();
  launch.keptCount = int(kept.size());

  // No handler of the host may run in the new process.
  sigset_t all, before;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  pid_ = plainFork(0);
  if (pid_ == 0) supervise(launch);
  const int reason = errno;
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  errno = reason;
  output = std::move(out.read);
  error = std::move(err.read);
  report = std::move(end.read);
  control_ = std::move(control.write);
  return pid_ > 0;
}

/// Reads what is there. False at the end of the stream.
bool drain(const Descriptor& source, const std::function<void(const char*, int)>& take) {
  char buffer[16 * 1024];
  const ssize_t count = read(source.fd(), buffer, sizeof buffer);
  if (count > 0) take(buffer, static_cast<int>(count));
  return count > 0 || (count < 0 && (errno == EINTR || errno == EAGAIN));
}

ChildEnd::How howOf(const Report& report, int& code) {
  code = report.code;
  switch (report.kind) {
    case Report::NotPrepared:
      return ChildEnd::NotPrepared;
    case Report::NoFolder:
      return ChildEnd::NoFolder;
    case Report::NotStarted:
      return ChildEnd::NotStarted;
    case Report::Status:
      break;
  }
  if (WIFEXITED(report.code)) {
    code = WEXITSTATUS(report.code);
    return ChildEnd::Exited;
  }
  code = WTERMSIG(report.code);
  return WIFSIGNALED(report.code) ? ChildEnd::Killed : ChildEnd::Lost;
}

}  // namespace

ChildEnd runChild(const ChildJob& job) {
  ChildEnd end;
  Supervisor child;
  if (!child.start(job)) {
    end.code = errno;
    return end;
  }
  using Clock = std::chrono::steady_clock;
  const auto deadline = Clock::now() + std::chrono::seconds(qMax(1, job.timeLimitSeconds));
  auto lastIdle = Clock::now() - std::chrono::seconds(1);
  end.how = ChildEnd::Lost;
  ChildEnd::How stopped = ChildEnd::Exited;  // Why it was ended before its time, if it was.
  const auto stop = [&](ChildEnd::How reason) {
    if (stopped == ChildEnd::Exited) stopped = reason;
    child.stop();
  };
  const auto takeOutput = [&](const char* data, int count) {
    const int room = qMin(count, qMax(0, job.outputLimitBytes - end.output.size()));
    end.output.append(data, room);
    if (room < count) stop(ChildEnd::TooMuchOutput);
  };
  const auto takeError = [&end](const char* data, int count) {
    const int room = qMin(count, kErrorHead - end.firstError.size());
    end.firstError.append(data, room);
    end.lastError.append(data + room, count - room);
    if (end.lastError.size() > 4 * kErrorTail) end.lastError = end.lastError.right(kErrorTail);
  };
  while (child.report.isOpen() || child.output.isOpen() || child.error.isOpen()) {
    const bool over = !child.report.isOpen();
    pollfd watched[] = {{child.report.fd(), POLLIN, 0}, {child.output.fd(), POLLIN, 0}, {child.error.fd(), POLLIN, 0}};
    const int ready = poll(watched, 3, over ? 0 : kPollMilliseconds);
    // Whoever still holds the pipes then is no descendant: what is there is all that counts.
    if (over && ready <= 0) break;
    if (ready > 0 && watched[1].revents && !drain(child.output, takeOutput)) child.output.reset();
    if (ready > 0 && watched[2].revents && !drain(child.error, takeError)) child.error.reset();
    if (ready > 0 && watched[0].revents) {
      Report report;
      const ssize_t size = read(child.report.fd(), &report, sizeof report);
      if (size == ssize_t(sizeof report)) end.how = howOf(report, end.code);
      if (size >= 0 || errno != EINTR) child.report.reset();
    }
    const auto now = Clock::now();
    if (!child.report.isOpen() || stopped != ChildEnd::Exited) continue;
    if (now >= deadline) {
      stop(ChildEnd::OutOfTime);
    } else if (job.idle && now - lastIdle >= std::chrono::milliseconds(kPollMilliseconds)) {
      if (!job.idle()) stop(ChildEnd::Cancelled);
      lastIdle = Clock::now();
    }
  }
  if (stopped != ChildEnd::Exited) end.how = stopped;
  return end;
}

}  // namespace ost

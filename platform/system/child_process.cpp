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

constexpr int kPollMilliseconds = 40;  // The caller is promised at least ten calls of `idle` a second.
constexpr int kErrorHead = 64 * 1024;
constexpr int kErrorTail = 8 * 1024;

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
  if (job.files.size() > kMostChildFiles) {
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

/// One job from start to end: reads its pipes, serves the caller and enforces the limits.
class ChildRun {
 public:
  explicit ChildRun(const ChildJob& job) : job_(job) {}
  ChildEnd run();

 private:
  using Clock = std::chrono::steady_clock;
  bool isOpen() const { return child_.report.isOpen() || child_.output.isOpen() || child_.error.isOpen(); }
  bool readPipes();
  void takeOutput(const char* data, int count);
  void takeError(const char* data, int count);
  void takeReport();
  void serveCaller();
  void stop(ChildEnd::How reason);

  const ChildJob& job_;
  Supervisor child_;
  ChildEnd end_;
  ChildEnd::How stopped_ = ChildEnd::Exited;  ///< Why it was ended before its time, if it was.
  Clock::time_point deadline_, lastIdle_;
};

ChildEnd ChildRun::run() {
  if (!child_.start(job_)) {
    end_.code = errno;
    return end_;
  }
  deadline_ = Clock::now() + std::chrono::seconds(qMax(1, job_.timeLimitSeconds));
  lastIdle_ = Clock::now() - std::chrono::seconds(1);
  end_.how = ChildEnd::Lost;
  while (isOpen() && readPipes())
    if (child_.report.isOpen() && stopped_ == ChildEnd::Exited) serveCaller();
  if (stopped_ != ChildEnd::Exited) end_.how = stopped_;
  return end_;
}

/// Waits for data, and takes it. False when the program has ended and its pipes hold nothing more.
bool ChildRun::readPipes() {
  const bool over = !child_.report.isOpen();
  pollfd watched[] = {{child_.report.fd(), POLLIN, 0}, {child_.output.fd(), POLLIN, 0}, {child_.error.fd(), POLLIN, 0}};
  const int ready = poll(watched, 3, over ? 0 : kPollMilliseconds);
  // A process that still holds the pipes then is not a descendant: only what is already there counts.
  if (ready <= 0) return !over;
  const auto output = [this](const char* data, int count) { takeOutput(data, count); };
  const auto error = [this](const char* data, int count) { takeError(data, count); };
  if (watched[1].revents && !drain(child_.output, output)) child_.output.reset();
  if (watched[2].revents && !drain(child_.error, error)) child_.error.reset();
  if (watched[0].revents) takeReport();
  return true;
}

void ChildRun::takeOutput(const char* data, int count) {
  if (job_.takeText) return job_.takeText(data, count);
  const int room = qMin(count, qMax(0, job_.outputLimitBytes - end_.output.size()));
  end_.output.append(data, room);
  if (room < count) stop(ChildEnd::TooMuchOutput);
}

/// Keeps the head and the tail of the error output.
void ChildRun::takeError(const char* data, int count) {
  if (job_.takeText) return job_.takeText(data, count);
  const int room = qMin(count, kErrorHead - end_.firstError.size());
  end_.firstError.append(data, room);
  end_.lastError.append(data + room, count - room);
  if (end_.lastError.size() > 4 * kErrorTail) end_.lastError = end_.lastError.right(kErrorTail);
}

void ChildRun::takeReport() {
  Report report;
  const ssize_t size = read(child_.report.fd(), &report, sizeof report);
  if (size == ssize_t(sizeof report)) end_.how = howOf(report, end_.code);
  if (size >= 0 || errno != EINTR) child_.report.reset();
}

void ChildRun::serveCaller() {
  const auto now = Clock::now();
  if (now >= deadline_) {
    stop(ChildEnd::OutOfTime);
  } else if (job_.idle && now - lastIdle_ >= std::chrono::milliseconds(kPollMilliseconds)) {
    if (!job_.idle()) stop(ChildEnd::Cancelled);
    lastIdle_ = Clock::now();
  }
}

void ChildRun::stop(ChildEnd::How reason) {
  if (stopped_ == ChildEnd::Exited) stopped_ = reason;
  child_.stop();
}

}  // namespace

ChildEnd runChild(const ChildJob& job) {
  return ChildRun(job).run();
}

}  // namespace ost

// A lock belongs to one process, tells which, and is taken over when that one is gone.
#include "platform/system/lock_file.h"

#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <vector>

#include "platform/system/descriptor.h"
#include "tests/unit/scratch.h"

namespace ost {
namespace {

/// The number of a process that has ended; unless `waitedFor`, nobody has noticed it yet.
pid_t endedProcess(bool waitedFor = true) {
  const pid_t child = fork();
  if (child == 0) _exit(0);
  siginfo_t info;
  waitid(P_PID, id_t(child), &info, WEXITED | (waitedFor ? 0 : WNOWAIT));
  return child;
}

TEST(LockFile, JudgesWhoHasIt) {
  Scratch scratch;
  const ProcessMark own = ProcessMark::own();
  const auto lines = [](int count, ProcessMark mark) {
    return mark.text().split('\n').mid(0, count).join('\n') + '\n';
  };
  const auto with = [&own](const std::function<void(ProcessMark&)>& change) {
    ProcessMark mark = own;
    change(mark);
    return mark;
  };
  const auto dead = with([](ProcessMark& m) { m.pid = endedProcess(); });
  const auto otherProgram = with([](ProcessMark& m) { m.program = "other"; });
  const pid_t zombie = endedProcess(false);
  const struct {
    const char* what;
    QByteArray text;
    LockFile::Outcome outcome;
    ProcessMark::State state = ProcessMark::Gone;
  } table[] = {
      {"a living process", own.text(), LockFile::Held, ProcessMark::Lives},
      {"a dead one", dead.text(), LockFile::Taken},
      {"an ended one", with([&](ProcessMark& m) { m.pid = zombie, m.start = 0; }).text(), LockFile::Taken},
      {"a number given again", with([](ProcessMark& m) { ++m.start; }).text(), LockFile::Taken},
      {"before the last start", with([](ProcessMark& m) { m.boot = "earlier"; }).text(), LockFile::Taken},
      {"another host", with([](ProcessMark& m) { m.boot = "x", m.host = "far"; }).text(), LockFile::Held,
       ProcessMark::Elsewhere},
      {"another container", with([](ProcessMark& m) { m.pidSpace = "pid:[1]"; }).text(), LockFile::Held,
       ProcessMark::Elsewhere},
      {"earlier version, alive", lines(5, own), LockFile::Held, ProcessMark::Lives},
      {"earlier version, dead", lines(5, dead), LockFile::Taken},
      {"earlier version, number given again", lines(3, otherProgram), LockFile::Taken},
      {"earlier version, another host", lines(3, with([](ProcessMark& m) { m.host = "far"; })), LockFile::Held,
       ProcessMark::Elsewhere},
      {"empty", "", LockFile::Unclear},
      {"half", own.text().left(3), LockFile::Unclear},
      {"no number", "0\na\nb\n", LockFile::Unclear},
      {"another file", "one\ntwo\nthree\nfour\n", LockFile::Unclear},
      {"a large file", own.text() + QByteArray(5000, 'x'), LockFile::Unclear},
  };
  for (const auto& row : table) {
    scratch.write("lock", row.text);
    LockFile lock(scratch.path("lock"));
    const LockFile::Answer answer = lock.take();
    EXPECT_EQ(answer.outcome, row.outcome) << row.what << ": " << plain(answer.reason);
    EXPECT_EQ(lock.isHeld(), row.outcome == LockFile::Taken) << row.what;
    EXPECT_EQ(answer.reason.isEmpty(), row.outcome != LockFile::Unclear) << row.what;
    if (row.outcome == LockFile::Taken) continue;
    EXPECT_EQ(scratch.read("lock"), row.text) << row.what;
    EXPECT_TRUE(row.outcome == LockFile::Unclear || answer.holder.state() == row.state) << row.what;
  }
  EXPECT_EQ(scratch.entries(), QStringList("lock"));
  waitpid(zombie, nullptr, 0);
}

TEST(LockFile, NeverWaitsForWhatIsInItsPlace) {
  Scratch scratch;
  const QByteArray place = scratch.path("lock").toLatin1();
  const struct {
    const char* reason;
    std::function<int()> make;
  } table[] = {{"it is a FIFO", [&] { return mkfifo(place.constData(), 0600); }},
               {"it is a folder", [&] { return mkdir(place.constData(), 0700); }},
               {"it is a link", [&] { return symlink("/dev/zero", place.constData()); }}};
  for (const auto& row : table) {
    ASSERT_EQ(row.make(), 0);
    const LockFile::Answer answer = LockFile(scratch.path("lock")).take();
    EXPECT_EQ(answer.outcome, LockFile::Unclear) << row.reason;
    EXPECT_TRUE(has(answer.reason, row.reason));
    EXPECT_EQ(remove(place.constData()), 0);
  }
  EXPECT_EQ(LockFile(scratch.path("none/lock")).take().outcome, LockFile::NoPlace);
}

TEST(LockFile, IsGivenUpByItsOwnerOnly) {
  Scratch scratch;
  const auto lock = std::make_unique<LockFile>(scratch.path("lock"));
  ASSERT_EQ(lock->take().outcome, LockFile::Taken);
  const pid_t child = fork();
  if (child == 0) {
    lock->~LockFile();
    _exit(0);
  }
  waitpid(child, nullptr, 0);
  EXPECT_TRUE(lock->isHeld());
  EXPECT_EQ(LockFile(scratch.path("lock")).take().outcome, LockFile::Held);

  // Somebody removed it, and it was taken anew.
  auto removed = std::make_unique<LockFile>(scratch.path("removed"));
  ASSERT_EQ(removed->take().outcome, LockFile::Taken);
  QFile::remove(scratch.path("removed"));
  EXPECT_FALSE(removed->isHeld());
  LockFile anew(scratch.path("removed"));
  ASSERT_EQ(anew.take().outcome, LockFile::Taken);
  removed.reset();
  EXPECT_TRUE(anew.isHeld());
}

TEST(LockFile, OfAProcessThatIsBeingKilledIsWaitedFor) {
  Scratch scratch;
  for (int round = 0; round < 8; ++round) {
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    const pid_t child = fork();
    if (child == 0) {
      LockFile lock(scratch.path("lock"));
      const std::vector<char> heavy(60 << 20, 'x');  // which takes a moment to give back
      const char taken = lock.take().outcome;
      write(ready[1], &taken, 1);
      pause();
      _exit(heavy[0]);
    }
    char outcome = -1;
    ASSERT_EQ(read(ready[0], &outcome, 1), 1);
    EXPECT_EQ(outcome, LockFile::Taken);
    kill(child, SIGKILL);
    LockFile lock(scratch.path("lock"));
    EXPECT_EQ(lock.take().outcome, LockFile::Taken);
    waitpid(child, nullptr, 0);
    for (const int fd : ready) close(fd);
  }
}

TEST(LockFile, IsTakenOverByOne) {
  constexpr int kRounds = 60, kRacers = 6;
  Scratch scratch;
  ProcessMark dead = ProcessMark::own();
  dead.pid = endedProcess();
  for (int round = 0; round < kRounds; ++round) {
    scratch.write("lock", dead.text());
    int start[2], results[2], end[2];
    ASSERT_EQ(pipe(start) + pipe(results) + pipe(end), 0);
    pid_t racers[kRacers];
    for (pid_t& racer : racers) {
      racer = fork();
      if (racer) continue;
      char byte;
      close(start[1]);
      close(end[1]);
      read(start[0], &byte, 1);
      LockFile lock(scratch.path("lock"));
      const char outcome = lock.take().outcome;
      write(results[1], &outcome, 1);
      read(end[0], &byte, 1);  // alive until all have tried
      _exit(0);
    }
    close(start[1]);
    int winners = 0;
    for (int i = 0; i < kRacers; ++i) {
      char outcome = -1;
      ASSERT_EQ(read(results[0], &outcome, 1), 1);
      winners += outcome == LockFile::Taken;
      EXPECT_TRUE(outcome == LockFile::Taken || outcome == LockFile::Held) << int(outcome);
    }
    close(end[1]);
    for (const pid_t racer : racers) waitpid(racer, nullptr, 0);
    for (const int fd : {start[0], results[0], results[1], end[0]}) close(fd);
    ASSERT_EQ(winners, 1) << "in round " << round;
  }
  EXPECT_EQ(scratch.entries(), QStringList("lock"));
}

}  // namespace
}  // namespace ost

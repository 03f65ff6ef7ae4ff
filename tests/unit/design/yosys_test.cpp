// The child process that runs Yosys: limits, cancelling, a missing program, and words of its script.
#include "platform/design/yosys.h"

#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <chrono>

#include "tests/unit/design/scratch.h"

namespace {

using namespace ost;

class Yosys : public testing::Test {
 protected:
  // A program in Yosys' place that runs `body` in a shell.
  void standIn(const QByteArray& body) {
    const QByteArray program = scratch.write("program", "#!/bin/sh\n" + body).toLatin1();
    chmod(program.constData(), 0700);
    qputenv("OST_YOSYS", program);
  }
  // True once no process has the number that the stand-in wrote into the file "pid".
  bool descendantIsGone() {
    QFile file(scratch.folder.filePath(wire("pid")));
    if (!file.open(QIODevice::ReadOnly)) return false;
    const pid_t pid = file.readAll().trimmed().toInt();
    for (int i = 0; i < 200 && pid > 0; ++i) {
      if (kill(pid, 0) != 0) return true;
      QFile status(wire("/proc/%1/stat").arg(pid));
      if (!status.open(QIODevice::ReadOnly) || status.readAll().contains(") Z ")) return true;
      usleep(10000);
    }
    return false;
  }
  QByteArray sleeper() { return "sleep 100 & echo $! >'" + QFile::encodeName(scratch.folder.path()) + "/pid'\nwait\n"; }
  void TearDown() override { qunsetenv("OST_YOSYS"); }
  Scratch scratch;
};

TEST_F(Yosys, is_stopped_with_its_descendants_at_the_time_limit_and_on_cancel) {
  standIn(sleeper());
  YosysJob job;
  job.timeLimitSeconds = 1;
  YosysResult result = runYosys(job);
  EXPECT_FALSE(result.ok || result.cancelled);
  EXPECT_NE(plain(result.error).find("time limit of 1 s"), std::string::npos) << plain(result.error);
  EXPECT_TRUE(descendantIsGone());

  job.timeLimitSeconds = 60;
  const auto start = std::chrono::steady_clock::now();
  int calls = 0;
  job.idle = [&] {
    ++calls;
    return std::chrono::steady_clock::now() - start < std::chrono::milliseconds(1000);
  };
  result = runYosys(job);
  EXPECT_TRUE(result.cancelled);
  EXPECT_GE(calls, 10);
  EXPECT_TRUE(descendantIsGone());
}

TEST_F(Yosys, that_needs_more_memory_than_allowed_is_told_so) {
  const QString file = scratch.write("big.v",
                                     "module t; reg [63:0] m [0:2000000]; reg [63:0] x; always @* begin m[0] = x; "
                                     "m[x] = m[x+1]; end endmodule\n");
  DesignSource source = sourceOf({file});
  source.memoryLimitBytes = qint64(200) << 20;
  QString error;
  EXPECT_FALSE(readDesign(source, error));
  EXPECT_NE(plain(error).find("memory limit of 200 MB"), std::string::npos) << plain(error);
}

TEST_F(Yosys, that_is_missing_or_fails_gives_one_text) {
  YosysJob job;
  qputenv("OST_YOSYS", "no-such-program");
  const YosysResult missing = runYosys(job);
  EXPECT_NE(plain(missing.error).find("Debian package \"yosys\""), std::string::npos) << plain(missing.error);
  EXPECT_NE(plain(missing.error).find("OST_YOSYS"), std::string::npos);
  standIn("echo 'w: Warning: x' >&2; echo 'a.v:3: ERROR: first' >&2; echo 'ERROR: second' >&2; exit 1\n");
  EXPECT_EQ(plain(runYosys(job).error), "a.v:3: first");
  standIn("head -c 3000000 /dev/zero >&2; head -c 3000000 /dev/zero; exit 3\n");
  const YosysResult flooded = runYosys(job);
  EXPECT_EQ(flooded.output.size(), 3000000);
  EXPECT_NE(plain(flooded.error).find("exit status 3"), std::string::npos);
  standIn("kill -SEGV $$\n");
  EXPECT_NE(plain(runYosys(job).error).find("signal 11"), std::string::npos);
}

TEST_F(Yosys, leaves_the_processes_of_its_host_alone) {
  const pid_t other = fork();
  if (other == 0) {
    usleep(50000);
    _exit(7);
  }
  YosysJob job;
  job.script = "log hello\n";
  EXPECT_TRUE(runYosys(job).ok);
  int status = 0;
  ASSERT_EQ(waitpid(other, &status, 0), other);
  EXPECT_EQ(WEXITSTATUS(status), 7);
}

TEST_F(Yosys, words_are_one_word_or_none) {
  for (const char* word : {"plain", "a b", "caf\xc3\xa9", "x;y", "$paramod\\m\\W=s32'0", "a\"b", "n#1"}) {
    SCOPED_TRACE(word);
    YosysJob job;
    job.script = "log -stdout <" + yosysWord(word) + ">\n";
    const QByteArray quoted = yosysWord(word);
    job.script = "log -stdout " + quoted + "\n";
    const YosysResult result = runYosys(job);
    EXPECT_TRUE(result.ok) << plain(result.error);
    EXPECT_EQ(result.output.trimmed(), quoted);
  }
  for (const char* word : {"", "-x", "#x", "\"x\"", "<<EOT", "x;", "x\\", "a\nb", "a\tb", "a \"b"}) {
    EXPECT_TRUE(yosysWord(word).isEmpty()) << word;
  }
}

}  // namespace

// The child process that runs Yosys: limits, cancelling, a missing program, and words of its script.
#include "platform/design/yosys.h"

#include <sys/stat.h>

#include "tests/unit/read_design.h"

namespace ost {
namespace {

class Yosys : public testing::Test {
 protected:
  /// A program in Yosys' place that runs `body` in a shell.
  void standIn(const QByteArray& body) {
    const QByteArray program = scratch.write("program", "#!/bin/sh\n" + body).toLatin1();
    chmod(program.constData(), 0700);
    qputenv("OST_YOSYS", program);
  }
  /// True once no process has the number that the stand-in wrote into the file "pid".
  bool descendantIsGone() {
    const pid_t pid = scratch.read("pid").trimmed().toInt();
    for (int i = 0; i < 200 && pid > 0; ++i) {
      QFile status(QString("/proc/%1/stat").arg(pid));
      if (!status.open(QIODevice::ReadOnly) || status.readAll().contains(") Z ")) return true;
      usleep(10000);
    }
    return false;
  }
  void TearDown() override { qunsetenv("OST_YOSYS"); }
  Scratch scratch;
};

TEST_F(Yosys, is_stopped_with_its_descendants_at_the_time_limit_and_on_cancel) {
  standIn("sleep 100 & echo $! >'" + scratch.path("pid").toLatin1() + "'\nwait\n");
  for (const bool cancel : {false, true}) {
    YosysJob job;
    int calls = 0;
    job.timeLimitSeconds = cancel ? 60 : 1;
    job.idle = [&] { return ++calls < 20 || !cancel; };
    const YosysResult result = runYosys(job);
    EXPECT_EQ(result.cancelled, cancel);
    EXPECT_TRUE(has(result.error, cancel ? "Cancelled" : "time limit of 1 s"));
    EXPECT_GE(calls, 10);
    EXPECT_TRUE(descendantIsGone());
  }
}

TEST_F(Yosys, that_needs_more_memory_than_allowed_is_told_so) {
  DesignSource source = sourceOf({scratch.write("big.v",
                                                "module t; reg [63:0] m [0:2000000]; reg [63:0] x; always @* begin "
                                                "m[0] = x; m[x] = m[x+1]; end endmodule\n")});
  source.memoryLimitBytes = qint64(200) << 20;
  QString error;
  EXPECT_FALSE(readDesign(source, error));
  EXPECT_TRUE(has(error, "memory limit of 200 MB"));
}

TEST_F(Yosys, that_is_missing_or_fails_gives_one_text) {
  YosysJob job;
  qputenv("OST_YOSYS", "no-such-program");
  EXPECT_TRUE(
      has(runYosys(job).error, "Debian package \"yosys\", or name the program in the environment variable OST_YOSYS"));
  standIn("echo 'w: Warning: x' >&2; echo 'a.v:3: ERROR: first' >&2; echo 'ERROR: second' >&2; exit 1\n");
  EXPECT_EQ(plain(runYosys(job).error), "a.v:3: first");
  standIn("head -c 3000000 /dev/zero >&2; head -c 3000000 /dev/zero; exit 3\n");
  const YosysResult flooded = runYosys(job);
  EXPECT_EQ(flooded.output.size(), 3000000);
  EXPECT_TRUE(has(flooded.error, "exit status 3"));
  standIn("kill -SEGV $$\n");
  EXPECT_TRUE(has(runYosys(job).error, "signal 11"));
}

TEST_F(Yosys, words_are_one_word_or_none) {
  for (const char* word : {"", "-x", "#x", "\"x\"", "<<EOT", "x;", "x\\", "a\nb", "a \"b"})
    EXPECT_TRUE(yosysWord(word).isEmpty()) << word;
  YosysJob job;
  job.script = "log -stdout " + yosysWord("a b") + ' ' + yosysWord("x;y\"$n#1") + '\n';
  EXPECT_EQ(runYosys(job).output, "\"a b\" x;y\"$n#1\n");
}

}  // namespace
}  // namespace ost

// The child process that runs Yosys: limits, cancelling, how its end is known, and what its script can hold.
#include "platform/design/yosys.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include "platform/system/scratch_file.h"
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
  // A session of its own is no way out.
  standIn("setsid sh -c 'echo $$ >\"" + scratch.path("pid").toLatin1() + "\"; exec sleep 100' & wait\n");
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

TEST_F(Yosys, ends_with_its_descendants_when_we_are_killed) {
  standIn("setsid sh -c 'echo $$ >\"" + scratch.path("pid").toLatin1() + "\"; exec sleep 100' & wait\n");
  const pid_t host = fork();
  if (host == 0) _exit(runYosys(YosysJob()).ok);
  for (int i = 0; i < 500 && QFileInfo(scratch.path("pid")).size() == 0; ++i) usleep(10000);
  kill(host, SIGKILL);
  EXPECT_EQ(waitpid(host, nullptr, 0), host);
  EXPECT_TRUE(descendantIsGone());
}

TEST_F(Yosys, is_ended_and_leaves_nothing_open_when_the_caller_throws) {
  standIn("echo $$ >\"" + scratch.path("pid").toLatin1() + "\"; sleep 100\n");
  YosysJob job;
  job.idle = [this]() -> bool {
    if (QFileInfo(scratch.path("pid")).size() > 0) throw std::bad_alloc();
    return true;
  };
  const auto open = [] { return QDir("/proc/self/fd").entryList(QDir::AllEntries | QDir::System).size(); };
  const int before = open();
  EXPECT_THROW(runYosys(job), std::bad_alloc);
  EXPECT_EQ(open(), before);
  EXPECT_TRUE(descendantIsGone());
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
  QString flood;
  qputenv("OST_YOSYS", "no-such-program");
  EXPECT_TRUE(
      has(runYosys(job).error, "Debian package \"yosys\", or name the program in the environment variable OST_YOSYS"));
  standIn("echo 'w: Warning: x' >&2; echo 'a.v:3: ERROR: first' >&2; echo 'ERROR: second' >&2; exit 1\n");
  EXPECT_EQ(plain(runYosys(job).error), "a.v:3: first");
  standIn("head -c 3000000 /dev/zero >&2; exit 3\n");
  EXPECT_TRUE(has(runYosys(job).error, "exit status 3"));
  standIn("exec cat /dev/zero\n");
  const YosysResult flooded = runYosys(job);
  EXPECT_TRUE(has(flooded.error, "prints without end") && flooded.output.size() < 2000000);
  EXPECT_TRUE(yosysVersion(flood).isEmpty() && has(flood, "does not answer as Yosys does"));
  standIn("exit 0\n");
  EXPECT_TRUE(has(runYosys(job).error, "ended before its script did"));
  job.workingDirectory = "/nowhere";
  EXPECT_TRUE(has(runYosys(job).error, "in the folder \"/nowhere\": No such file"));
  standIn("kill -SEGV $$\n");
  job.workingDirectory.clear();
  EXPECT_TRUE(has(runYosys(job).error, "signal 11"));
}

void reapAll(int) {
  while (waitpid(-1, nullptr, WNOHANG) > 0) continue;
}

TEST_F(Yosys, fails_whatever_the_host_does_with_the_ends_of_its_children) {
  standIn("exit 1\n");
  for (const auto handler : {SIG_DFL, SIG_IGN, &reapAll}) {
    const auto before = signal(SIGCHLD, handler);
    const YosysResult result = runYosys(YosysJob());
    signal(SIGCHLD, before);
    EXPECT_FALSE(result.ok);
    EXPECT_EQ(plain(result.error), "Yosys failed with exit status 1");
  }
}

TEST_F(Yosys, that_loses_the_process_that_watches_it_has_failed) {
  standIn("kill -KILL $PPID\nsleep 1\n");
  EXPECT_TRUE(has(runYosys(YosysJob()).error, "How Yosys ended is not known"));
}

/// Runs `work` below a limit of the system.
template <class Work>
void below(__rlimit_resource resource, rlim_t value, Work work) {
  rlimit before;
  getrlimit(resource, &before);
  const rlimit low{value, before.rlim_max};
  setrlimit(resource, &low);
  work();
  setrlimit(resource, &before);
}

TEST_F(Yosys, without_descriptors_is_not_started_and_writes_over_nothing) {
  const QByteArray ours = scratch.write("ours", "ours").toLatin1(), its = scratch.write("its", "").toLatin1();
  YosysJob job;
  job.script.line("read_verilog -nodpi")
      .text({"module t(output a); assign a = 1; endmodule"})
      .line("write_verilog")
      .openFile(0);
  // However many are left, to us with one file or to the child with many: each step on the way may be the one that
  // fails.
  int failures = 0, successes = 0;
  for (const int files : {1, 14}) {
    for (int room = 0; room < 40; ++room) {
      const Descriptor file(open(its.constData(), O_RDWR | O_CLOEXEC));
      std::vector<Descriptor> held;
      do held.emplace_back(open(ours.constData(), O_RDWR));
      while (files == 1 && held.back().fd() < 40);
      job.files = QVector<int>(files, file.fd());
      YosysResult result;
      below(RLIMIT_NOFILE, rlim_t(held.back().fd() + 1 + room), [&] { result = runYosys(job); });
      (result.ok ? successes : failures) += 1;
      EXPECT_TRUE(result.ok || has(result.error, "Too many open files"));
      EXPECT_EQ(scratch.read("ours"), "ours");
    }
  }
  EXPECT_TRUE(failures > 15 && successes > 15 && scratch.read("its").contains("module t")) << failures;
}

TEST_F(Yosys, is_watched_by_a_process_that_holds_nothing_of_ours) {
  const Descriptor ours(open(scratch.write("ours", "").toLatin1().constData(), O_RDWR | O_CLOEXEC));
  standIn("for process in $PPID $$; do ls -l /proc/$process/fd; done >'" + scratch.path("seen").toLatin1() + "'\n");
  runYosys(YosysJob());
  EXPECT_TRUE(scratch.read("seen").contains("pipe:") && !scratch.read("seen").contains("ours"));
}

TEST_F(Yosys, without_room_for_its_files_is_told_the_systems_reason) {
  ScratchFile file;
  QString reason;
  ASSERT_TRUE(file.open(reason) && file.write("text", reason) && file.hasRoom(reason));
  const auto before = signal(SIGXFSZ, SIG_IGN);
  YosysResult result;
  below(RLIMIT_FSIZE, 4, [&] {
    result = runYosys(YosysJob());
    EXPECT_FALSE(file.hasRoom(reason));
  });
  signal(SIGXFSZ, before);
  for (const QString& text : {reason, result.error})
    EXPECT_TRUE(text.startsWith("Cannot write a temporary file in \"") && has(text, ": File too large")) << plain(text);
}

YosysResult run(const YosysScript& script) {
  YosysJob job;
  job.script = script;
  return runYosys(job);
}

TEST_F(Yosys, scripts_take_names_and_files_as_such_or_are_not_run) {
  for (const char* id :
       {"", "\\", "top", "!id", "-x", "\\x;", "\\x\\", "\\x ", "\\a b", "\\t\n!id", "\\t\r", "\\t\x7f"})
    EXPECT_TRUE(has(run(YosysScript().line("log").module(id)).error, "cannot be passed to Yosys")) << id;
  for (const char* file : {"", "a", "-x", "/a b", "/a;", "/a\n", "/\"a", "/*", "/[a]", "/{a}", "/$a", "/a\\"})
    EXPECT_FALSE(YosysScript().line("read_verilog").file(file).problem().isEmpty()) << file;
  EXPECT_FALSE(YosysScript().line("read_verilog").text({"a\n!id"}).problem().isEmpty());
  EXPECT_FALSE(YosysScript().line("read_verilog").text({" OST_END_OF_TEXT x"}).problem().isEmpty());
  EXPECT_EQ(run(YosysScript().line("log -stdout").module("\\x;y\"$n#1!id").module("$p*{a}<<E")).output,
            "\\x;y\"$n#1!id $p*{a}<<E\n");
}

}  // namespace
}  // namespace ost

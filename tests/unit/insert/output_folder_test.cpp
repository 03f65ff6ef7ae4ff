// The output folder is never one of the user's nor another project's, nothing of anybody's is lost with it, and an exit
// in the middle leaves nothing beside it. (Ends and failures at each of its calls are in tests/tcl/crash.test.)
#include "platform/insert/output_folder.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/system/process_mark.h"
#include "tests/unit/scratch.h"

namespace ost {
namespace {

bool replace(const QString& target, const QByteArray& contents, QString& error, const QString& project = {}) {
  OutputFolder output(target, project);
  return output.begin({"a.v"}, error) && output.write("a.v", contents, error) && output.commit(error);
}

TEST(OutputFolder, ReplacesItsOwnAndRefusesForeignOnes) {
  Scratch scratch;
  QString error;
  ASSERT_TRUE(replace(scratch.path("out"), "one", error)) << plain(error);
  ASSERT_TRUE(replace(scratch.path("out"), "two", error)) << plain(error);
  EXPECT_EQ(scratch.read("out/a.v"), "two");
  EXPECT_EQ(scratch.entries(), QStringList("out"));

  // A file of ours that somebody changed is theirs.
  scratch.write("out/a.v", "edited");
  EXPECT_FALSE(replace(scratch.path("out"), "three", error));
  EXPECT_TRUE(has(error, "\"a.v\" was changed after the insertion wrote it"));
  scratch.write("out/a.v", "two");

  scratch.write("out/.notes", "mine");
  scratch.write("file", "mine");
  const struct {
    const char *target, *text;
  } table[] = {{"out", ".notes"}, {"file", "There is a file or link in the place"}, {"none/out", "none/out"}};
  for (const auto& row : table) {
    EXPECT_FALSE(replace(scratch.path(row.target), "three", error)) << row.target;
    EXPECT_TRUE(has(error, row.text));
  }
  EXPECT_EQ(scratch.read("out/a.v") + scratch.read("out/.notes") + scratch.read("file"), "twominemine");
  EXPECT_EQ(scratch.entries(), QStringList({"file", "out"}));
}

TEST(OutputFolder, IsLeftAsItWasByAProcessThatExitsOrBroughtBack) {
  Scratch scratch;
  QString error;
  ASSERT_TRUE(replace(scratch.path("out"), "one", error)) << plain(error);
  const pid_t child = fork();
  if (child == 0) {
    OutputFolder output(scratch.path("out"));
    output.begin({"a.v"}, error);
    output.write("a.v", "half", error);
    // A child of such a process takes nothing away from it.
    if (fork() == 0) std::exit(0);
    wait(nullptr);
    if (access(output.stagedFile("a.v").toLatin1().constData(), F_OK) != 0) scratch.write("lost", "");
    std::exit(0);
  }
  waitpid(child, nullptr, 0);
  EXPECT_EQ(scratch.entries(), QStringList("out"));
  EXPECT_EQ(scratch.read("out/a.v"), "one");
  // A run that died between its two renames left the old folder under this name.
  ASSERT_TRUE(QDir().rename(scratch.path("out"), scratch.path("out") + QString(".old-%1").arg(child)));
  EXPECT_TRUE(OutputFolder(scratch.path("out")).begin({"a.v"}, error)) << plain(error);
  EXPECT_EQ(scratch.read("out/a.v"), "one");
}

TEST(OutputFolder, LeavesAloneWhatOnlyLooksLikeItsOwn) {
  Scratch scratch;
  QString error;
  const pid_t dead = fork();
  if (dead == 0) _exit(0);
  waitpid(dead, nullptr, 0);
  const QByteArray pid = QByteArray::number(getpid()), gone = QByteArray::number(dead), tag = ownTag();
  ASSERT_TRUE(QDir(scratch.path("")).mkdir("theirs"));
  scratch.write("theirs/ostrel_files.txt", "precious\n");
  scratch.write("theirs/precious", "mine");
  for (const QByteArray& name : {pid, gone, tag + "-0"})
    ASSERT_EQ(symlink("theirs", scratch.path("out.new-" + name).toLatin1().constData()), 0);
  // A number that was given again is another process; what runs elsewhere is not known from here.
  const QByteArray again = pid + "-1" + tag.mid(tag.lastIndexOf('-')), elsewhere = gone + "-1-00000000";
  for (const QByteArray& name : {again, elsewhere, tag + "-1"})
    ASSERT_TRUE(QDir(scratch.path("")).mkdir("out.new-" + name));
  QStringList stay{"out",
                   "out.new-" + pid,
                   "out.new-" + gone,
                   "out.new-" + tag + "-0",
                   "out.new-" + tag + "-1",
                   "out.new-" + elsewhere,
                   "theirs"};
  stay.sort();
  ASSERT_TRUE(replace(scratch.path("out"), "one", error)) << plain(error);
  QStringList there = scratch.entries();
  there.sort();
  EXPECT_EQ(plain(there.join(' ')), plain(stay.join(' ')));
  EXPECT_EQ(scratch.read("out/a.v") + scratch.read("theirs/precious"), "onemine");
}

TEST(OutputFolder, IsReplacedForItsOwnProjectOnly) {
  Scratch scratch;
  QString error;
  for (const char* project : {"", "p.x1", "p.x1"})
    ASSERT_TRUE(replace(scratch.path("out"), project, error, project)) << plain(error);
  EXPECT_FALSE(replace(scratch.path("out"), "other", error, "p.x2"));
  for (const char* part : {"for the project \"p.x1\"", "\"p.x2\" would replace it", "ost_project save <file>"})
    EXPECT_TRUE(has(error, part));
  EXPECT_EQ(scratch.read("out/a.v"), "p.x1");
  const QString odd = "a\n%41/.ost";
  ASSERT_TRUE(replace(scratch.path("odd"), "one", error, odd) && replace(scratch.path("odd"), "two", error, odd));
  EXPECT_FALSE(replace(scratch.path("odd"), "three", error, "aA.ost"));
}

TEST(OutputFolder, LosesNothingThatSomebodyPutsIntoIt) {
  Scratch scratch;
  QString error;
  const QString out = scratch.path("out");
  ASSERT_TRUE(replace(out, "one", error)) << plain(error);
  {
    OutputFolder output(out);
    ASSERT_TRUE(output.begin({"a.v"}, error) && output.write("a.v", "two", error)) << plain(error);
    scratch.write("out/notes", "mine");
    EXPECT_FALSE(output.commit(error));
    EXPECT_TRUE(has(error, "holds \"notes\", which no insertion wrote"));
  }
  {
    OutputFolder output(scratch.path("moved"));
    ASSERT_TRUE(output.begin({"a.v"}, error)) << plain(error);
    const QString staged = scratch.path(scratch.entries().filter("moved.new-").value(0).toLatin1());
    ASSERT_TRUE(QDir().rename(staged, scratch.path("elsewhere")) && QDir().mkdir(staged));
    EXPECT_FALSE(output.commit(error));
    EXPECT_TRUE(has(error, "has been moved away") && QDir().rmdir(staged));
    QDir(scratch.path("elsewhere")).removeRecursively();
  }
  EXPECT_EQ(scratch.read("out/a.v") + scratch.read("out/notes"), "onemine");
  QFile::remove(scratch.path("out/notes"));

  // Somebody who puts files into it all the time.
  int counted[2];
  ASSERT_EQ(pipe(counted), 0);
  const pid_t child = fork();
  if (child == 0) {
    int made = 0;
    for (int i = 0; i < 300; ++i) {
      // Even inside a folder that is being replaced.
      const Descriptor folder(open(out.toLatin1().constData(), O_RDONLY | O_DIRECTORY));
      usleep(useconds_t(i % 11 * 700));
      const QByteArray name = "n" + QByteArray::number(i);
      made += Descriptor(openat(folder.fd(), name.constData(), O_WRONLY | O_CREAT | O_EXCL, 0600)).isOpen();
    }
    write(counted[1], &made, sizeof made);
    _exit(0);
  }
  int made = 0, found = 0, replaced = 0;
  const auto collect = [&] {
    for (const QString& name : QDir(out).entryList({"n*"}, QDir::Files)) found += QFile::remove(out + '/' + name);
  };
  while (waitpid(child, nullptr, WNOHANG) == 0) {
    replaced += replace(out, "three", error);
    collect();
  }
  collect();
  ASSERT_EQ(read(counted[0], &made, sizeof made), ssize_t(sizeof made));
  EXPECT_EQ(found, made);
  EXPECT_GT(made, 0);
  EXPECT_EQ(scratch.entries(), QStringList("out"));
}

}  // namespace
}  // namespace ost

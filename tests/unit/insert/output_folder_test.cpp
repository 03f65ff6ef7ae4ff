// The output folder is never one of the user's, and an exit in the middle leaves nothing beside it. (Ends and failures
// at each of its calls are in tests/tcl/crash.test.)
#include "platform/insert/output_folder.h"

#include <sys/wait.h>
#include <unistd.h>

#include "tests/unit/scratch.h"

namespace ost {
namespace {

bool replace(const QString& target, const QByteArray& contents, QString& error) {
  OutputFolder output(target);
  return output.begin({"a.v"}, error) && output.write("a.v", contents, error) && output.commit(error);
}

TEST(OutputFolder, ReplacesItsOwnAndRefusesForeignOnes) {
  Scratch scratch;
  QString error;
  ASSERT_TRUE(replace(scratch.path("out"), "one", error)) << plain(error);
  ASSERT_TRUE(replace(scratch.path("out"), "two", error)) << plain(error);
  EXPECT_EQ(scratch.read("out/a.v"), "two");
  EXPECT_EQ(scratch.entries(), QStringList("out"));

  scratch.write("out/.notes", "mine");
  scratch.write("file", "mine");
  const struct {
    const char *target, *text;
  } table[] = {{"out", ".notes"}, {"file", "in the way"}, {"none/out", "none/out"}};
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

}  // namespace
}  // namespace ost

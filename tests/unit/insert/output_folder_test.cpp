// The output folder is replaced as a whole or not at all, and never a folder of the user's.
#include "platform/insert/output_folder.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QDir>

#include "tests/unit/insert/tricky.h"

namespace ost {
namespace {

QStringList entries(const QTemporaryDir& folder) {
  return QDir(folder.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
}

bool replace(const QString& target, const QByteArray& contents, QString& error) {
  OutputFolder output(target);
  return output.begin({QStringLiteral("a.v")}, error) && output.write(QStringLiteral("a.v"), contents, error) &&
         output.commit(error);
}

TEST(OutputFolder, ReplacesItsOwnAndRefusesForeignOnes) {
  QTemporaryDir folder;
  const QString target = folder.filePath(QStringLiteral("out"));
  QString error;
  ASSERT_TRUE(replace(target, "one", error)) << qPrintable(error);
  ASSERT_TRUE(replace(target, "two", error)) << qPrintable(error);
  EXPECT_EQ(readFile(target + QStringLiteral("/a.v")), "two");
  EXPECT_EQ(entries(folder), QStringList{QStringLiteral("out")});

  writeFile(target + QStringLiteral("/.notes"), "mine");
  EXPECT_FALSE(replace(target, "three", error));
  EXPECT_TRUE(error.contains(QStringLiteral(".notes"))) << qPrintable(error);
  EXPECT_EQ(readFile(target + QStringLiteral("/a.v")), "two");
  EXPECT_EQ(readFile(target + QStringLiteral("/.notes")), "mine");

  const QString file = folder.filePath(QStringLiteral("file"));
  writeFile(file, "mine");
  EXPECT_FALSE(replace(file, "four", error));
  EXPECT_FALSE(replace(folder.filePath(QStringLiteral("none/out")), "five", error));
  EXPECT_TRUE(error.contains(QStringLiteral("none/out"))) << qPrintable(error);
  EXPECT_EQ(entries(folder).size(), 2);
}

TEST(OutputFolder, ExitLeavesNothingAndDeadRunsAreClearedAway) {
  QTemporaryDir folder;
  const QString target = folder.filePath(QStringLiteral("out"));
  QString error;
  ASSERT_TRUE(replace(target, "one", error));
  for (const bool orderly : {true, false}) {
    const pid_t child = fork();
    if (child == 0) {
      OutputFolder output(target);
      output.begin({QStringLiteral("a.v")}, error);
      output.write(QStringLiteral("a.v"), "half", error);
      if (orderly) std::exit(0);
      _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(entries(folder).size(), orderly ? 1 : 2);
    EXPECT_EQ(readFile(target + QStringLiteral("/a.v")), "one");
    // A run that died between its two renames left the old folder under this name.
    if (!orderly) QDir().rename(target, target + QStringLiteral(".old-%1").arg(child));
  }
  OutputFolder next(target);
  EXPECT_TRUE(next.begin({QStringLiteral("a.v")}, error));
  EXPECT_EQ(readFile(target + QStringLiteral("/a.v")), "one");
  EXPECT_EQ(entries(folder).size(), 2);  // the old result and this run's stage
}

TEST(OutputFolder, CancelledInsertionLeavesTheOldResult) {
  QTemporaryDir folder;
  const QString target = folder.filePath(QStringLiteral("out"));
  QString error;
  ASSERT_EQ(insertTricky(trickyPlan(), folder), "");
  const QByteArray before = readFile(target + QStringLiteral("/capture_map.json"));
  for (const int calls : {0, 2}) {
    int left = calls;
    InsertionHooks hooks;
    hooks.idle = [&left] { return left-- > 0; };
    EXPECT_FALSE(insertTricky(trickyPlan(), folder, hooks).empty());
    EXPECT_EQ(entries(folder), QStringList{QStringLiteral("out")});
    EXPECT_EQ(readFile(target + QStringLiteral("/capture_map.json")), before);
  }
}

}  // namespace
}  // namespace ost

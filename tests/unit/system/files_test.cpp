// Files are replaced as a whole with all that protects them, or not at all; reading waits for nothing.
#include "platform/system/files.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <sys/xattr.h>

#include <cerrno>

#include "tests/unit/scratch.h"

namespace ost {
namespace {

/// Runs it in a child process, whose exit status is 0 when it said true.
template <class Body>
bool inChild(Body body) {
  const pid_t child = fork();
  if (child == 0) _exit(body() ? 0 : 1);
  int status = -1;
  return waitpid(child, &status, 0) == child && status == 0;
}

QByteArray bytesOf(const QString& path) {
  return path.toLatin1();
}

/// Why the file is not replaced; empty when it is.
std::string refusal(const QString& path, const QByteArray& content = "new") {
  QString reason;
  return replaceFile({path, path + ".saving"}, content, reason) ? std::string() : plain(reason);
}

mode_t modeOf(const QString& path) {
  struct stat info;
  return stat(bytesOf(path).constData(), &info) == 0 ? info.st_mode & 07777 : 0;
}

TEST(ReplaceFile, KeepsTheModeOrRefuses) {
  Scratch scratch;
  const struct {
    mode_t mode;
    const char* refused;
  } table[] = {
      {0600, ""}, {0666, ""}, {0750, ""}, {0444, "it is protected from writing"}, {0, "it is protected from writing"}};
  for (const auto& row : table) {
    const QString file = scratch.write("file", "old");
    ASSERT_EQ(chmod(bytesOf(file).constData(), row.mode), 0);
    EXPECT_EQ(refusal(file), row.refused) << row.mode;
    EXPECT_EQ(modeOf(file), row.mode);
    chmod(bytesOf(file).constData(), 0600);
    EXPECT_EQ(scratch.read("file"), *row.refused ? "old" : "new");
  }
  symlink("file", bytesOf(scratch.path("link")).constData());
  symlink("none", bytesOf(scratch.path("nowhere")).constData());
  EXPECT_EQ(refusal(scratch.path("link"), "through"), "");
  EXPECT_EQ(scratch.read("file"), "through");
  EXPECT_EQ(refusal(scratch.path("nowhere")), "it is a link that leads nowhere");
  EXPECT_EQ(refusal(scratch.path("")), "it is a folder");
  EXPECT_EQ(refusal(scratch.path("none/file")), "No such file or directory");
  EXPECT_EQ(scratch.entries(), QStringList({"file", "link"}));
}

TEST(ReplaceFile, ThatFailsLeavesTheOldOneAndCanBeRepeated) {
  Scratch scratch;
  const QString file = scratch.write("file", "old");
  EXPECT_TRUE(inChild([&] {
    const rlimit limit = {100000, 100000};
    setrlimit(RLIMIT_FSIZE, &limit);
    signal(SIGXFSZ, SIG_IGN);
    return refusal(file, QByteArray(200000, 'x')) == "File too large";
  }));
  EXPECT_EQ(scratch.read("file"), "old");
  EXPECT_EQ(scratch.entries(), QStringList("file"));
  EXPECT_EQ(refusal(file), "");
}

TEST(ReplaceFile, KeepsTheOwnerOrRefuses) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can be two users";
  Scratch scratch;
  chmod(bytesOf(scratch.path("")).constData(), 0777);
  const uid_t nobody = 65534;
  for (const mode_t mode : {0644, 0666}) {
    const QString file = scratch.write("file", "old");
    chmod(bytesOf(file).constData(), mode);
    EXPECT_TRUE(inChild([&] {
      if (setegid(nobody) != 0 || seteuid(nobody) != 0) return false;
      return QString::fromStdString(refusal(file))
          .startsWith(mode == 0644 ? "it is protected" : "it belongs to another user or group");
    })) << mode;
    EXPECT_EQ(scratch.read("file"), "old");
  }
  struct stat info = {};
  const QByteArray file = bytesOf(scratch.path("file"));
  ASSERT_EQ(chown(file.constData(), nobody, nobody), 0);
  EXPECT_EQ(refusal(scratch.path("file")), "");
  EXPECT_EQ(stat(file.constData(), &info), 0);
  EXPECT_EQ(info.st_uid + info.st_gid, nobody + nobody);
  EXPECT_EQ(scratch.entries(), QStringList("file"));
}

TEST(ReplaceFile, KeepsTheAccessListAndTakesNoneOfTheFolder) {
  Scratch scratch;
  const auto entry = [](char tag, char permissions, const char* id) {
    return QByteArray(1, tag) + QByteArray(1, 0) + permissions + QByteArray(1, 0) + QByteArray::fromHex(id);
  };
  const char none[] = "ffffffff";
  const QByteArray list = QByteArray::fromHex("02000000") + entry(1, 6, none) + entry(2, 6, "feff0000") +
                          entry(4, 4, none) + entry(16, 6, none) + entry(32, 0, none);
  const auto set = [&list](const QString& place, const char* name) {
    return setxattr(bytesOf(place).constData(), name, list.constData(), size_t(list.size()), 0);
  };
  const char access[] = "system.posix_acl_access";
  const QString without = scratch.write("without", "old"), with = scratch.write("with", "old");
  if (set(with, access) != 0) GTEST_SKIP() << "no access lists here";
  char found[100];
  for (const auto& [file, size] : {std::pair<QString, ssize_t>{with, list.size()}, {without, -1}}) {
    EXPECT_EQ(refusal(file), "");
    EXPECT_EQ(getxattr(bytesOf(file).constData(), access, found, sizeof found), size);
    EXPECT_EQ(set(scratch.path(""), "system.posix_acl_default"), 0);
  }
}

TEST(ReadFile, WaitsForNothing) {
  Scratch scratch;
  ASSERT_EQ(mkfifo(bytesOf(scratch.path("pipe")).constData(), 0600), 0);
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  qstrncpy(address.sun_path, bytesOf(scratch.path("socket")).constData(), sizeof address.sun_path);
  const Descriptor socket(::socket(AF_UNIX, SOCK_STREAM, 0));
  ASSERT_EQ(bind(socket.fd(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  scratch.write("file", "12345");
  const struct {
    QString file;
    qint64 most;
    const char* reason;
  } table[] = {{scratch.path("file"), 5, ""},
               {scratch.path("file"), 4, "it is larger than 4 bytes"},
               {"/proc/self/pagemap", (3 << 20) - 1, "it is larger than 2 MB"},  // claims to be empty
               {"/dev/zero", 100, "it is not a regular file"},
               {scratch.path("pipe"), 100, "it is a FIFO, not a regular file"},
               {scratch.path("socket"), 100, "it is not a regular file"},
               {scratch.path(""), 100, "it is a folder"},
               {scratch.path("none"), 100, "No such file or directory"}};
  for (const auto& row : table) {
    QByteArray bytes = "left";
    QString reason;
    EXPECT_EQ(readFile(row.file, row.most, bytes, reason), !*row.reason) << plain(row.file);
    EXPECT_EQ(plain(reason), row.reason);
    EXPECT_EQ(bytes, *row.reason ? "" : "12345");
  }
}

TEST(FileWriter, RemembersWhatFailed) {
  FileWriter full(Descriptor(open("/dev/full", O_WRONLY | O_CLOEXEC)));
  full.write(QByteArray(200000, 'x'));
  errno = 0;
  EXPECT_FALSE(full.finish());
  EXPECT_EQ(errno, ENOSPC);
  Scratch scratch;
  FileWriter file(Descriptor(open(bytesOf(scratch.path("file")).constData(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600)));
  QByteArray all;
  for (int size : {1, 0, 65536, 65535, 200000, 3}) {
    all += QByteArray(size, char('a' + size % 7));
    EXPECT_EQ(file.write(all.right(size)), size);
  }
  EXPECT_TRUE(file.finish());
  EXPECT_TRUE(scratch.read("file") == all);
}

}  // namespace
}  // namespace ost

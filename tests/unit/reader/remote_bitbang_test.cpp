// The remote-bitbang client against servers that answer well, badly or not at all.
#include "platform/reader/remote_bitbang.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <QRegularExpression>
#include <QTemporaryDir>
#include <chrono>
#include <functional>
#include <thread>

#include "platform/reader/faulty_port.h"

namespace ost {
namespace {

/// A server on a UNIX socket: one connection, handled by `serve`, then closed.
class Server {
 public:
  explicit Server(std::function<void(int fd)> serve) {
    path_ = folder_.filePath(QStringLiteral("s"));
    listener_ = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un name = {};
    name.sun_family = AF_UNIX;
    qstrcpy(name.sun_path, path_.toLatin1().constData());
    EXPECT_EQ(bind(listener_, reinterpret_cast<sockaddr*>(&name), sizeof name), 0);
    EXPECT_EQ(listen(listener_, 1), 0);
    thread_ = std::thread([this, serve] {
      const int fd = accept(listener_, nullptr, nullptr);
      serve(fd);
      close(fd);
    });
  }
  ~Server() {
    thread_.join();
    close(listener_);
  }
  std::unique_ptr<RemoteBitbang> client() {
    QString error;
    ServerAddress address;
    EXPECT_TRUE(parseServerAddress(QStringLiteral("unix:") + path_, address, error));
    auto result = RemoteBitbang::connect(address, 2, error);
    EXPECT_TRUE(result) << error.toStdString();
    return result;
  }

 private:
  QTemporaryDir folder_;
  QString path_;
  int listener_;
  std::thread thread_;
};

/// TDO answers TDI of one cycle before, as a register of one bit does.
void serveShiftRegister(int fd) {
  char c, stored = 0, pins = 0;
  while (read(fd, &c, 1) == 1 && c != 'Q') {
    if (c == 'R') {
      const char answer = stored ? '1' : '0';
      if (write(fd, &answer, 1) != 1) return;
    } else {
      const char now = static_cast<char>(c - '0');
      if ((now & 4) && !(pins & 4)) stored = now & 1;
      pins = now;
    }
  }
}

TEST(RemoteBitbang, BitsGoAndComeInOrderAndLongTransfersDoNotBlock) {
  Server server(serveShiftRegister);
  auto client = server.client();
  QByteArray bits;
  for (int i = 0; i < 200000; ++i) bits += static_cast<char>((i * 7 / 3) & 1);
  QByteArray read;
  QString error;
  ASSERT_TRUE(client->run(QByteArray(bits.size(), 0), bits, &read, error)) << error.toStdString();
  EXPECT_EQ(read.mid(1), bits.left(bits.size() - 1));
}

TEST(RemoteBitbang, EachFailureIsOneClearErrorAndStays) {
  struct Case {
    std::function<void(int)> serve;
    const char* text;
  };
  const Case cases[] = {
      {[](int) {}, "closed the connection|has gone"},
      {[](int fd) { sleep(write(fd, "hello", 5) == 5); }, "0x68"},
      {[](int) { sleep(1); }, "not moved a byte for 0.3 s"},
      {[](int fd) { sleep(write(fd, "0101", 4) == 4); }, "not moved a byte"},
  };
  for (const Case& one : cases) {
    Server server(one.serve);
    auto client = server.client();
    client->setSilenceLimit(0.3);
    QByteArray read;
    QString error, again;
    EXPECT_FALSE(client->run(QByteArray(50, 0), QByteArray(50, 0), &read, error)) << one.text;
    EXPECT_TRUE(error.contains(QRegularExpression(QString::fromLatin1(one.text)))) << error.toStdString();
    EXPECT_FALSE(client->run(QByteArray(1, 0), QByteArray(1, 0), &read, again)) << one.text;
  }
}

TEST(RemoteBitbang, PlacesThatAreNoServer) {
  ServerAddress address;
  QString error;
  for (const char* text : {"", "fifo:", "tcp:host", "tcp::80", "tcp:h:0", "tcp:h:65536", "udp:h:1", "unix:"}) {
    EXPECT_FALSE(parseServerAddress(QString::fromLatin1(text), address, error)) << text;
    EXPECT_TRUE(error.contains(QStringLiteral("fifo:DIR"))) << error.toStdString();
  }
  ASSERT_TRUE(parseServerAddress(QStringLiteral("tcp:::1:4444"), address, error));
  EXPECT_EQ(address.place, QStringLiteral("::1"));
  EXPECT_EQ(address.port, 4444);

  QTemporaryDir folder;
  address = {ServerAddress::Fifo, folder.path(), 0};
  EXPECT_FALSE(RemoteBitbang::connect(address, 0.05, error));
  EXPECT_TRUE(error.contains(QStringLiteral("mkfifo"))) << error.toStdString();
  ASSERT_EQ(mkfifo((folder.path() + QStringLiteral("/to_sim")).toLatin1().constData(), 0600), 0);
  EXPECT_FALSE(RemoteBitbang::connect(address, 0.05, error));
  EXPECT_TRUE(error.contains(QStringLiteral("Nobody reads"))) << error.toStdString();
  address = {ServerAddress::Unix, folder.path() + QStringLiteral("/none"), 0};
  EXPECT_FALSE(RemoteBitbang::connect(address, 0.05, error));
  EXPECT_TRUE(error.contains(QStringLiteral("Cannot connect"))) << error.toStdString();
}

/// Answers TDI at once.
class Echo : public JtagPort {
 public:
  bool run(const QByteArray&, const QByteArray& tdi, QByteArray* tdo, QString&) override {
    if (tdo) *tdo += tdi;
    return true;
  }
  bool flush(QString&) override { return true; }
};

TEST(FaultyPort, FlipsAtTheRateAskedForAndRepeatsWithItsSeed) {
  Echo echo;
  QString error;
  const QByteArray zeros(20000, 0);
  QByteArray first, second;
  FaultyPort one(echo, 7, 0, 0, 0.01), same(echo, 7, 0, 0, 0.01);
  ASSERT_TRUE(one.run(zeros, zeros, &first, error));
  ASSERT_TRUE(same.run(zeros, zeros, &second, error));
  EXPECT_EQ(first, second);
  EXPECT_EQ(first.count(1), one.faults());
  EXPECT_NEAR(one.faults(), 200, 60);
}

}  // namespace
}  // namespace ost

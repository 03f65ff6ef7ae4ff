// The remote-bitbang client against servers that answer well, badly or not at all.
#include "platform/reader/remote_bitbang.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <functional>
#include <thread>

#include "tests/unit/scratch.h"

namespace ost {
namespace {

/// A server on a UNIX socket: one connection, handled by `serve`, then closed.
class Server {
 public:
  explicit Server(std::function<void(int fd)> serve) {
    listener_ = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un name = {};
    name.sun_family = AF_UNIX;
    qstrcpy(name.sun_path, scratch_.path("s").toLatin1());
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
    EXPECT_TRUE(parseServerAddress("unix:" + scratch_.path("s"), address, error));
    auto result = RemoteBitbang::connect(address, 2, error);
    EXPECT_TRUE(result) << error.toStdString();
    return result;
  }

 private:
  Scratch scratch_;
  int listener_;
  std::thread thread_;
};

/// TDO is TDI.
void serveWire(int fd) {
  char c, pins = 0;
  while (read(fd, &c, 1) == 1 && c != 'Q') {
    if (c != 'R')
      pins = c;
    else if (write(fd, pins & 1 ? "1" : "0", 1) != 1)
      return;
  }
}

TEST(RemoteBitbang, BitsGoAndComeInOrderAndLongTransfersDoNotBlock) {
  Server server(serveWire);
  auto client = server.client();
  QByteArray bits;
  for (int i = 0; i < 200000; ++i) bits += static_cast<char>((i * 7 / 3) & 1);
  QByteArray read;
  QString error;
  ASSERT_TRUE(client->run(QByteArray(bits.size(), 0), bits, &read, error)) << error.toStdString();
  EXPECT_TRUE(read == bits);
}

TEST(RemoteBitbang, EachFailureIsOneClearErrorAndStays) {
  const struct {
    std::function<void(int)> serve;
    const char* text;
  } table[] = {
      {[](int fd) { sleep(write(fd, "hello", 5) == 5); }, "0x68"},
      {[](int) { sleep(1); }, "not moved a byte for 0.3 s"},
      {[](int fd) { sleep(write(fd, "0101", 4) == 4); }, "not moved a byte"},
      {[](int fd) { shutdown(fd, SHUT_RDWR); }, "failed: it "},  // closed the connection, or has gone
  };
  for (const auto& row : table) {
    SCOPED_TRACE(row.text);
    Server server(row.serve);
    auto client = server.client();
    client->setSilenceLimit(0.3);
    QByteArray read;
    QString error, again;
    EXPECT_FALSE(client->run(QByteArray(50, 0), QByteArray(50, 0), &read, error));
    EXPECT_TRUE(has(error, row.text));
    EXPECT_FALSE(client->run(QByteArray(1, 0), QByteArray(1, 0), nullptr, again));
  }
}

TEST(RemoteBitbang, PlacesThatAreNoServer) {
  ServerAddress address;
  QString error;
  for (const char* text : {"", "fifo:", "tcp:host", "tcp::80", "tcp:h:0", "tcp:h:65536", "udp:h:1", "unix:"}) {
    EXPECT_FALSE(parseServerAddress(text, address, error)) << text;
    EXPECT_TRUE(has(error, "fifo:DIR"));
  }
  ASSERT_TRUE(parseServerAddress("tcp:::1:4444", address, error));
  EXPECT_TRUE(address.place == "::1" && address.port == 4444) << plain(address.place);

  Scratch empty, unread;
  ASSERT_EQ(mkfifo(unread.path("to_sim").toLatin1(), 0600), 0);
  const struct {
    ServerAddress address;
    const char* text;
  } table[] = {{{ServerAddress::Fifo, empty.path(""), 0}, "mkfifo"},
               {{ServerAddress::Fifo, unread.path(""), 0}, "Nobody reads"},
               {{ServerAddress::Unix, empty.path("none"), 0}, "Cannot connect"}};
  for (const auto& row : table) {
    EXPECT_FALSE(RemoteBitbang::connect(row.address, 0.05, error)) << row.text;
    EXPECT_TRUE(has(error, row.text));
  }
}

}  // namespace
}  // namespace ost

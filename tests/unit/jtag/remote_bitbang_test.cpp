// The remote-bitbang client against servers that answer well, badly or not at all.
#include "platform/jtag/remote_bitbang.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <climits>
#include <ctime>
#include <functional>
#include <thread>

#include "tests/unit/scratch.h"

namespace ost {
namespace {

const ServerAddress::Kind kKinds[] = {ServerAddress::Fifo, ServerAddress::Unix, ServerAddress::Tcp};

/// A server of one connection, handled by `serve` with the descriptors that it reads and writes, then closed.
class Server {
 public:
  using Serve = std::function<void(int in, int& out)>;
  Server(ServerAddress::Kind kind, Serve serve) : address_{kind, scratch_.path("s"), 0} {
    if (kind == ServerAddress::Fifo) {
      address_.place = scratch_.path("");
      for (const char* name : {"to_sim", "from_sim"}) EXPECT_EQ(mkfifo(scratch_.path(name).toLatin1(), 0600), 0);
    } else {
      listen(kind);
    }
    thread_ = std::thread([this, serve] {
      const bool fifo = address_.kind == ServerAddress::Fifo;
      const int in =
          fifo ? open(scratch_.path("to_sim").toLatin1(), O_RDONLY) : accept(listener_.fd(), nullptr, nullptr);
      int out = fifo ? open(scratch_.path("from_sim").toLatin1(), O_WRONLY) : in;
      serve(in, out);
      if (out >= 0 && out != in) close(out);
      close(in);
    });
  }
  ~Server() { thread_.join(); }
  std::unique_ptr<RemoteBitbang> client() {
    QString error;
    auto result = RemoteBitbang::connect(address_, 2, error);
    EXPECT_TRUE(result) << plain(error);
    return result;
  }

 private:
  void listen(ServerAddress::Kind kind) {
    sockaddr_un name = {};
    sockaddr_in place = {};
    name.sun_family = AF_UNIX;
    qstrcpy(name.sun_path, address_.place.toLatin1());
    place.sin_family = AF_INET;
    place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const bool tcp = kind == ServerAddress::Tcp;
    sockaddr* const any = tcp ? reinterpret_cast<sockaddr*>(&place) : reinterpret_cast<sockaddr*>(&name);
    socklen_t size = tcp ? sizeof place : sizeof name;
    listener_.reset(socket(any->sa_family, SOCK_STREAM, 0));
    EXPECT_TRUE(bind(listener_.fd(), any, size) == 0 && ::listen(listener_.fd(), 1) == 0);
    if (!tcp) return;
    EXPECT_EQ(getsockname(listener_.fd(), any, &size), 0);
    address_.place = "127.0.0.1";
    address_.port = ntohs(place.sin_port);
  }

  Scratch scratch_;
  ServerAddress address_;
  Descriptor listener_;
  std::thread thread_;
};

/// Reads `count` bytes, or to the end.
void swallow(int fd, int count = INT_MAX) {
  char c;
  while (count-- > 0 && read(fd, &c, 1) == 1) continue;
}

/// False when the client has gone.
bool answer(int fd, const QByteArray& bytes) {
  return write(fd, bytes.constData(), size_t(bytes.size())) == bytes.size();
}

/// Ends what it sends, and goes on reading.
void endSending(int in, int& out) {
  if (in == out)
    shutdown(out, SHUT_WR);
  else
    close(std::exchange(out, -1));
  swallow(in);
}

/// TDO is TDI.
void serveWire(int in, int& out) {
  char c, pins = 0;
  while (read(in, &c, 1) == 1 && c != 'Q') {
    if (c == 'R')
      answer(out, pins & 1 ? "1" : "0");
    else
      pins = c;
  }
}

/// What this process used of the processor, and how long it took, since the object was made: seconds.
struct Watch {
  std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
  clock_t used = clock();
  double seconds() const { return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(); }
  double processor() const { return double(clock() - used) / CLOCKS_PER_SEC; }
};

TEST(RemoteBitbang, BitsGoAndComeInOrderAndLongTransfersDoNotBlock) {
  QByteArray bits;
  for (int i = 0; i < 40000; ++i) bits += static_cast<char>((i * 7 / 3) & 1);
  for (const ServerAddress::Kind kind : kKinds) {
    SCOPED_TRACE(kind);
    Server server(kind, serveWire);
    auto client = server.client();
    QByteArray read;
    QString error;
    ASSERT_TRUE(client->run(QByteArray(bits.size(), 0), bits, &read, error)) << plain(error);
    EXPECT_TRUE(read == bits);
  }
}

TEST(RemoteBitbang, AnEndIsNoticedAtOnceBehindWhicheverByte) {
  constexpr int kBits = 6;
  for (const ServerAddress::Kind kind : kKinds) {
    for (int answers = 0; answers <= kBits; ++answers) {
      SCOPED_TRACE(testing::Message() << "kind " << kind << ", behind " << answers);
      Server server(kind, [=](int in, int& out) {
        swallow(in, 3 * kBits);
        answer(out, QByteArray(answers, '0'));
        endSending(in, out);
      });
      auto client = server.client();
      const Watch watch;
      QByteArray read;
      QString error;
      EXPECT_EQ(client->run(QByteArray(kBits, 0), QByteArray(kBits, 0), &read, error), answers == kBits);
      const QString due = QString("it closed the connection with %1 replies outstanding").arg(kBits - answers);
      EXPECT_TRUE(answers == kBits || has(error, qPrintable(due)));
      EXPECT_LT(watch.seconds(), 5);
    }
  }
}

/// The limits, in small: what stood still is told, in time, and without work for the processor.
TEST(RemoteBitbang, EachFailureIsOneClearErrorAndStays) {
  const auto dribble = [](int, int& out) {
    while (answer(out, "0")) usleep(20000);
  };
  const struct {
    Server::Serve serve;
    int bits;              // below 0: only sent
    double silence, time;  // limits; 0: none set
    const char* text;
  } table[] = {
      {[](int in, int& out) { answer(out, "hello"), swallow(in); }, 50, 0.2, 0, "0x68"},
      {[](int in, int&) { swallow(in); }, 50, 0.2, 0, "transferred no byte for 0.2 s (0 of 50 replies came)"},
      {[](int in, int& out) { answer(out, "0101"), swallow(in); }, 50, 0.2, 0,
       "no byte for 0.2 s (4 of 50 replies came)"},
      {dribble, 50, 0.2, 0, "fewer than 150 bytes in 0.2 s ("},
      {dribble, 50, 30, 0.2, "not done within its 0.2 s ("},
      // It reads nothing, and what it would write to is closed already.
      {[](int in, int& out) {
         if (in != out) close(std::exchange(out, -1));
         usleep(300000);
       },
       -400000, 0.2, 0, " of 800000 commands"},
  };
  for (const auto& row : table) {
    for (const ServerAddress::Kind kind : kKinds) {
      if (row.bits < 0 && kind == ServerAddress::Tcp) continue;  // the system would keep it all
      SCOPED_TRACE(testing::Message() << "kind " << kind << ": " << row.text);
      Server server(kind, row.serve);
      auto client = server.client();
      client->setSilenceLimit(row.silence);
      if (row.time > 0) client->setTimeLimit(row.time);
      const Watch watch;
      const QByteArray levels(qAbs(row.bits), 0);
      QByteArray read;
      QString error, again;
      EXPECT_FALSE(client->run(levels, levels, row.bits > 0 ? &read : nullptr, error));
      EXPECT_TRUE(has(error, row.text));
      EXPECT_LT(watch.seconds(), 5);
      EXPECT_LT(watch.processor(), 0.15);
      EXPECT_FALSE(client->run(levels.left(1), levels.left(1), nullptr, again));
    }
  }
}

TEST(RemoteBitbang, PlacesThatAreNoServer) {
  ServerAddress address;
  QString error;
  for (const char* text :
       {"", "fifo:", "tcp:host", "tcp::80", "tcp:h:0", "tcp:h:65536", "tcp:h:1x", "udp:h:1", "unix:"}) {
    EXPECT_FALSE(parseServerAddress(text, address, error)) << text;
    EXPECT_TRUE(has(error, "fifo:DIR"));
  }
  ASSERT_TRUE(parseServerAddress("tcp:::1:4444", address, error));
  EXPECT_TRUE(address.place == "::1" && address.port == 4444) << plain(address.place);

  Scratch empty, unread, plainFile;
  plainFile.write("to_sim", "");
  ASSERT_EQ(mkfifo(unread.path("to_sim").toLatin1(), 0600), 0);
  const struct {
    ServerAddress address;
    const char* text;
  } table[] = {{{ServerAddress::Fifo, empty.path(""), 0}, "mkfifo"},
               {{ServerAddress::Fifo, unread.path(""), 0}, "No program reads"},
               {{ServerAddress::Fifo, plainFile.path(""), 0}, "is not a FIFO"},
               {{ServerAddress::Unix, empty.path("none"), 0}, "Cannot connect"},
               {{ServerAddress::Tcp, "127.0.0.1", 1}, "\"127.0.0.1:1\": Connection refused"},
               {{ServerAddress::Tcp, "no.such.host.invalid", 1}, "Cannot find the host \"no.such.host.invalid\""}};
  for (const auto& row : table) {
    const Watch watch;
    EXPECT_FALSE(RemoteBitbang::connect(row.address, 0.05, error)) << row.text;
    EXPECT_TRUE(has(error, row.text));
    EXPECT_LT(watch.seconds(), 5);
  }
}

}  // namespace
}  // namespace ost

// Each way to a TAP against servers that answer well, badly or not at all.
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <QRegularExpression>
#include <chrono>
#include <climits>
#include <ctime>
#include <functional>
#include <thread>

#include "platform/jtag/connect_tap.h"
#include "tests/unit/scratch.h"

namespace ost {
namespace {

struct Way {
  ServerAddress::Protocol protocol;
  ServerAddress::Kind kind;
  const char* name;
};
const Way kWays[] = {{ServerAddress::RemoteBitbang, ServerAddress::Fifo, "fifo"},
                     {ServerAddress::RemoteBitbang, ServerAddress::Unix, "unix"},
                     {ServerAddress::RemoteBitbang, ServerAddress::Tcp, "tcp"},
                     {ServerAddress::Xvc, ServerAddress::Tcp, "xvc"},
                     {ServerAddress::OpenOcd, ServerAddress::Tcp, "openocd"}};

/// Reads `count` bytes, or to the end.
void swallow(int fd, int count = INT_MAX) {
  char c;
  while (count-- > 0 && read(fd, &c, 1) == 1) continue;
}

/// What comes before the byte `end`.
QByteArray readTo(int fd, char end) {
  QByteArray text;
  for (char c; read(fd, &c, 1) == 1 && c != end;) text += c;
  return text;
}

/// False when the client has gone.
bool answer(int fd, const QByteArray& bytes) {
  return write(fd, bytes.constData(), size_t(bytes.size())) == bytes.size();
}

/// What a good server says before the first scan.
void greet(ServerAddress::Protocol protocol, int in, int out) {
  if (protocol == ServerAddress::Xvc) swallow(in, 8), answer(out, "xvcServer_v1.0:512\n");
  if (protocol != ServerAddress::OpenOcd) return;
  for (const char* text : {"0 a.tap\x1a", "0 1\x1a"}) readTo(in, 0x1a), answer(out, text);
}

/// A server of one connection, handled by `serve` with the descriptors that it reads and writes, then closed.
class Server {
 public:
  using Serve = std::function<void(int in, int& out)>;
  Server(const Way& way, Serve serve, bool greets = true)
      : address_{way.kind, scratch_.path("s"), 0, way.protocol, ""} {
    const ServerAddress::Kind kind = way.kind;
    if (kind == ServerAddress::Fifo) {
      address_.place = scratch_.path("");
      for (const char* name : {"to_sim", "from_sim"}) EXPECT_EQ(mkfifo(scratch_.path(name).toLatin1(), 0600), 0);
    } else {
      listen(kind);
    }
    thread_ = std::thread([this, serve, greets] {
      const bool fifo = address_.kind == ServerAddress::Fifo;
      const int in =
          fifo ? open(scratch_.path("to_sim").toLatin1(), O_RDONLY) : accept(listener_.fd(), nullptr, nullptr);
      int out = fifo ? open(scratch_.path("from_sim").toLatin1(), O_WRONLY) : in;
      if (greets) greet(address_.protocol, in, out);
      serve(in, out);
      if (out >= 0 && out != in) close(out);
      close(in);
    });
  }
  ~Server() { thread_.join(); }
  ConnectedTap client(QString& error) { return connectTap(address_, {{}, 7}, 2, error); }
  ConnectedTap client() {
    QString error;
    ConnectedTap result = client(error);
    EXPECT_TRUE(result.tap) << plain(error);
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

/// Ends what it sends, and goes on reading.
void endSending(int in, int& out) {
  if (in == out)
    shutdown(out, SHUT_WR);
  else
    close(std::exchange(out, -1));
  swallow(in);
}

/// TDO is TDI.
void serveWire(ServerAddress::Protocol protocol, int in, int& out) {
  char c, pins = 0;
  if (protocol == ServerAddress::RemoteBitbang) {
    while (read(in, &c, 1) == 1 && c != 'Q') {
      if (c == 'R')
        answer(out, pins & 1 ? "1" : "0");
      else
        pins = c;
    }
  } else if (protocol == ServerAddress::Xvc) {
    while (readTo(in, ':') == "shift") {
      quint32 bits = 0;
      if (read(in, &bits, 4) != 4) return;
      QByteArray tdi;
      QString tms;
      for (quint32 i = 0; i < (bits + 7) / 8 && read(in, &c, 1) == 1; ++i)
        for (int bit = 0; bit < 8; ++bit) tms += c >> bit & 1 ? "1" : "0";
      EXPECT_FALSE(tms.left(int(bits)).contains(QRegularExpression("^10{30}|0{8}10{7}"))) << "see XvcPort::run";
      while (tdi.size() < int(bits + 7) / 8 && read(in, &c, 1) == 1) tdi += c;
      EXPECT_LE(tdi.size(), 256);  // half of what it says to take
      answer(out, tdi);
    }
  } else {
    for (QByteArray text; !(text = readTo(in, 0x1a)).isEmpty();) {
      const int digits = text.lastIndexOf("0x") + 2;
      answer(out, "0 " + text.mid(digits, text.indexOf('}', digits) - digits) + '\x1a');
    }
  }
}

/// What this process used of the processor, and how long it took, since the object was made: seconds.
struct Watch {
  std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
  clock_t used = clock();
  double seconds() const { return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(); }
  double processor() const { return double(clock() - used) / CLOCKS_PER_SEC; }
};

TEST(Transports, BitsGoAndComeInOrderAndLongScansDoNotBlock) {
  QByteArray bits;
  for (int i = 0; i < 40001; ++i) bits += static_cast<char>((i * 7 / 3) & 1);
  for (const Way& way : kWays) {
    SCOPED_TRACE(way.name);
    Server server(way, [&](int in, int& out) { serveWire(way.protocol, in, out); });
    const ConnectedTap client = server.client();
    QByteArray read;
    QString error;
    bool answers = false;
    ASSERT_TRUE(client.tap->select({}, answers, error) && client.tap->scanData(bits, nullptr, error) &&
                client.tap->idle(20, error) && client.tap->scanData(bits, &read, error))
        << plain(error);
    EXPECT_TRUE(read == bits);
  }
}

TEST(Transports, DevicesAheadAndBehindAreSteppedOver) {
  struct Wire : JtagPort {
    QByteArray sent;
    bool run(const QByteArray&, const QByteArray& tdi, QByteArray* tdo, QString&) override {
      if (tdo) sent = tdi, *tdo += tdi;
      return true;
    }
    bool flush(QString&) override { return true; }
  } port;
  TapDriver tap(port, {2, 1});
  QByteArray read;
  QString error;
  ASSERT_TRUE(tap.scanData(QByteArray(3, 1), &read, error));
  EXPECT_TRUE(port.sent == QByteArray("\0\1\1\1\0\0", 6) && read == QByteArray(3, 1));
}

/// What a good server replies to a scan of six bits.
const QByteArray kReplies[] = {"000000", QByteArray(2, 0), "0 00\x1a"};

TEST(Transports, WhatComesUnaskedIsNoAnswer) {
  for (const Way& way : kWays) {
    SCOPED_TRACE(way.name);
    Server server(way, [&](int in, int& out) {
      swallow(in, 1), answer(out, kReplies[way.protocol]);
      usleep(50000), answer(out, kReplies[way.protocol]), swallow(in);
    });
    const ConnectedTap client = server.client();
    QByteArray read;
    QString error;
    EXPECT_TRUE(client.tap->scanData(QByteArray(6, 0), &read, error)) << plain(error);
    usleep(200000);
    EXPECT_FALSE(client.tap->scanData(QByteArray(6, 0), &read, error));
    EXPECT_TRUE(has(error, "more than it was asked for"));
  }
}

TEST(Transports, AnEndIsNoticedAtOnceBehindWhicheverByte) {
  for (const Way& way : kWays) {
    const QByteArray request[] = {QByteArray(24, 0), QByteArray(14, 0),
                                  "format {%d %s} [catch {drscan a.tap 6 0x00} ostrel_result] $ostrel_result\x1a"};
    const QByteArray reply = kReplies[way.protocol];
    for (int answers = 0; answers <= reply.size(); ++answers) {
      SCOPED_TRACE(testing::Message() << way.name << ", behind " << answers);
      Server server(way, [&](int in, int& out) {
        swallow(in, request[way.protocol].size());
        answer(out, reply.left(answers));
        endSending(in, out);
      });
      const ConnectedTap client = server.client();
      const Watch watch;
      QByteArray read;
      QString error;
      EXPECT_EQ(client.tap->scanData(QByteArray(6, 0), &read, error), answers == reply.size());
      EXPECT_TRUE(answers == reply.size() || has(error, "it closed the connection ("));
      EXPECT_TRUE(answers == reply.size() ||
                  has(error, qPrintable(QString::number(answers) +
                                        (way.protocol == ServerAddress::OpenOcd ? " bytes" : " of"))));
      EXPECT_LT(watch.seconds(), 5);
    }
  }
}

/// The limits, in small: what stood still is told, in time, and without work for the processor.
TEST(Transports, EachFailureIsOneClearErrorAndStays) {
  const auto dribble = [](int in, int& out) {
    swallow(in, 1);
    while (answer(out, "0")) usleep(20000);
  };
  const auto say = [](const QByteArray& text) {
    return [text](int in, int& out) { swallow(in, 1), answer(out, text), swallow(in); };
  };
  const QString all = "fifo unix tcp xvc openocd";
  const struct {
    QString ways;
    Server::Serve serve;
    int bits;              // below 0: only sent
    double silence, time;  // limits; 0: none set
    const char* text;
  } table[] = {
      {"fifo unix tcp", say("hello"), 800, 0.2, 0, "0x68"},
      {"openocd", say("hello\x1a"), 800, 0.2, 0, "\"hello\" to a command; is it the Tcl port"},
      {"openocd", say("1 no cable\nat all\x1a"), 800, 0.2, 0, "OpenOCD says \"no cable\"."},
      {"openocd", say("0 123\x1a"), 8, 0.2, 0, "\"123\" to a scan of 8 bits"},
      {"openocd", say("0 0g\x1a"), 8, 0.2, 0, "\"0g\" to a scan of 8 bits"},
      {"openocd", say("0 00\x1a!"), 8, 0.2, 0, "more than it was asked for"},
      {"openocd", say(QByteArray(2000000, '0')), 8, 0.2, 0, "does not end"},
      {all, say(""), 800, 0.2, 0, "transferred no byte for 0.2 s (0 "},
      {all, say("0101"), 800, 0.2, 0, " 0.2 s (4 "},
      {all, dribble, 8000, 0.2, 0, "fewer than 150 bytes in 0.2 s ("},
      {all, dribble, 8000, 30, 0.2, "not done within its 0.2 s ("},
      // It reads nothing, and what it would write to is closed already. (TCP: the system would keep it all.)
      {"fifo unix",
       [](int in, int& out) {
         if (in != out) close(std::exchange(out, -1));
         usleep(300000);
       },
       -400000, 0.2, 0, " of 800006 bytes"},
  };
  for (const auto& row : table) {
    for (const Way& way : kWays) {
      if (!row.ways.split(' ').contains(way.name)) continue;
      SCOPED_TRACE(testing::Message() << way.name << ": " << row.text);
      Server server(way, row.serve);
      const ConnectedTap client = server.client();
      client.connection->setSilenceLimit(row.silence);
      if (row.time > 0) client.connection->setTimeLimit(row.time);
      const Watch watch;
      const QByteArray levels(qAbs(row.bits), 0);
      QByteArray read;
      QString error, again;
      EXPECT_FALSE(client.tap->scanData(levels, row.bits > 0 ? &read : nullptr, error));
      EXPECT_TRUE(has(error, row.text));
      EXPECT_LT(watch.seconds(), 5);
      EXPECT_LT(watch.processor(), 0.15);
      EXPECT_FALSE(client.tap->scanData(levels.left(1), nullptr, again));
    }
  }
}

/// What is said before the first scan.
TEST(Transports, ServersOfAnotherKindAreRefused) {
  const struct {
    int way;
    QList<QByteArray> answers;
    const char* text;
  } table[] = {
      {3, {"hello\n"}, "\"hello\"; is it a virtual cable"},
      {3, {"xvcServer_v1.0:1\n"}, "is it a virtual cable"},
      {3, {QByteArray(300, 'x')}, "does not end"},
      {4, {"0 \x1a"}, "It has no TAP"},
      {4,
       {"0 a.tap [exit] b.tap\x1a", "0 1\x1a", "1 none\x1a"},
       "name it as openocd:HOST:PORT/TAP. Its TAPs: a.tap (IDCODE 0x00000001), b.tap (IDCODE 0x00000000)."},
  };
  for (const auto& row : table) {
    Server server(
        kWays[row.way],
        [&](int in, int& out) {
          for (const QByteArray& text : row.answers)
            row.way == 3 ? swallow(in, 8) : void(readTo(in, 0x1a)), answer(out, text);
          endSending(in, out);
        },
        false);
    QString error;
    EXPECT_FALSE(server.client(error).tap);
    EXPECT_TRUE(has(error, row.text));
  }
}

TEST(Transports, PlacesThatAreNoServer) {
  ServerAddress address;
  QString error;
  for (const char* text : {"", "fifo:", "tcp:host", "tcp::80", "tcp:h:0", "tcp:h:65536", "tcp:h:1x", "udp:h:1",
                           "unix:", "xvc:h", "openocd:h:1/", "openocd:h/t"}) {
    EXPECT_FALSE(parseServerAddress(text, address, error)) << text;
    EXPECT_TRUE(has(error, "fifo:DIR"));
  }
  ASSERT_TRUE(parseServerAddress("tcp:::1:4444", address, error));
  EXPECT_TRUE(address.place == "::1" && address.port == 4444) << plain(address.place);
  ASSERT_TRUE(parseServerAddress("openocd:h:6666/a.tap", address, error));
  EXPECT_TRUE(address.place == "h" && address.port == 6666 && address.tap == "a.tap") << plain(address.tap);

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
    EXPECT_FALSE(Connection::open(row.address, 0.05, error)) << row.text;
    EXPECT_TRUE(has(error, row.text));
    EXPECT_LT(watch.seconds(), 5);
  }
}

}  // namespace
}  // namespace ost

// Connecting and exchanging with a remote-bitbang server. All descriptors are non-blocking, so that a server that
// stands still in either direction is noticed.
#include "platform/reader/remote_bitbang.h"

#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>

namespace ost {
namespace {

constexpr int kKeepAtMost = 1 << 16;  ///< Bytes kept before they are sent without being asked for.

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

QString systemText(int code) {
  return QString::fromLatin1(strerror(code));
}

void sleepMilliseconds(int milliseconds) {
  ::poll(nullptr, 0, milliseconds);
}

void ignoreBrokenPipes() {
  struct sigaction action;
  if (sigaction(SIGPIPE, nullptr, &action) != 0 || action.sa_handler != SIG_DFL) return;
  action.sa_handler = SIG_IGN;
  sigaction(SIGPIPE, &action, nullptr);
}

/// Opens a FIFO for writing once a reader is there. -1 with `error` on failure.
int openFifoForWriting(const QString& name, double seconds, QString& error) {
  const QByteArray file = name.toLatin1();
  const Clock::time_point start = Clock::now();
  for (;;) {
    struct stat info;
    if (stat(file.constData(), &info) == 0 && !S_ISFIFO(info.st_mode)) {
      error = QStringLiteral("'%1' is not a FIFO; remove it and make one with mkfifo.").arg(name);
      return -1;
    }
    const int fd = ::open(file.constData(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd >= 0) return fd;
    const int code = errno;
    if (code != ENXIO && code != ENOENT && code != EINTR) {
      error = QStringLiteral("Cannot open the FIFO '%1': %2.").arg(name, systemText(code));
      return -1;
    }
    if (secondsSince(start) >= seconds) {
      error = code == ENOENT
                  ? QStringLiteral("There is no FIFO '%1'; make it with mkfifo and start the simulation.").arg(name)
                  : QStringLiteral("Nobody reads the FIFO '%1'; start the simulation first.").arg(name);
      return -1;
    }
    sleepMilliseconds(10);
  }
}

int openFifoForReading(const QString& name, QString& error) {
  const int fd = ::open(name.toLatin1().constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  struct stat info;
  if (fd >= 0 && fstat(fd, &info) == 0 && S_ISFIFO(info.st_mode)) return fd;
  error = fd < 0 ? QStringLiteral("Cannot open the FIFO '%1': %2.").arg(name, systemText(errno))
                 : QStringLiteral("'%1' is not a FIFO; remove it and make one with mkfifo.").arg(name);
  if (fd >= 0) ::close(fd);
  return -1;
}

/// One attempt to connect `fd` within `seconds`; 0 or the error number.
int connectSocket(int fd, const sockaddr* address, socklen_t length, double seconds) {
  if (::connect(fd, address, length) == 0) return 0;
  if (errno != EINPROGRESS) return errno;
  pollfd entry = {fd, POLLOUT, 0};
  if (::poll(&entry, 1, static_cast<int>(seconds * 1000)) <= 0) return ETIMEDOUT;
  int code = 0;
  socklen_t size = sizeof code;
  getsockopt(fd, SOL_SOCKET, SO_ERROR, &code, &size);
  return code;
}

/// Repeats `attempt` (which gives a descriptor, or -1 with an error number) until the server is up or time is over.
template <typename Attempt>
int connectWithin(double seconds, const QString& place, Attempt attempt, QString& error) {
  const Clock::time_point start = Clock::now();
  for (;;) {
    int code = 0;
    const int fd = attempt(seconds - secondsSince(start), code);
    if (fd >= 0) return fd;
    const bool mayCome = code == ECONNREFUSED || code == ENOENT;
    if (!mayCome || secondsSince(start) >= seconds) {
      error = QStringLiteral("Cannot connect to '%1': %2.").arg(place, systemText(code));
      return -1;
    }
    sleepMilliseconds(50);
  }
}

int connectUnix(const ServerAddress& address, double seconds, QString& error) {
  sockaddr_un name = {};
  name.sun_family = AF_UNIX;
  const QByteArray file = address.place.toLatin1();
  if (file.size() >= static_cast<int>(sizeof name.sun_path)) {
    error = QStringLiteral("The socket name '%1' is too long.").arg(address.place);
    return -1;
  }
  std::memcpy(name.sun_path, file.constData(), file.size());
  return connectWithin(
      seconds, address.place,
      [&](double left, int& code) {
        const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
        if (fd < 0) return code = errno, -1;
        code = connectSocket(fd, reinterpret_cast<sockaddr*>(&name), sizeof name, left);
        if (code == 0) return fd;
        ::close(fd);
        return -1;
      },
      error);
}

int connectTcp(const ServerAddress& address, double seconds, QString& error) {
  addrinfo hints = {};
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  const int status =
      getaddrinfo(address.place.toLatin1().constData(), QByteArray::number(address.port).constData(), &hints, &found);
  if (status != 0) {
    error =
        QStringLiteral("Cannot find the host '%1': %2.").arg(address.place, QString::fromLatin1(gai_strerror(status)));
    return -1;
  }
  const int result = connectWithin(
      seconds, QStringLiteral("%1:%2").arg(address.place).arg(address.port),
      [&](double left, int& code) {
        for (const addrinfo* one = found; one; one = one->ai_next) {
          const int fd = ::socket(one->ai_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, one->ai_protocol);
          if (fd < 0) {
            code = errno;
            continue;
          }
          code = connectSocket(fd, one->ai_addr, one->ai_addrlen, left);
          if (code == 0) {
            const int on = 1;
            setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
            return fd;
          }
          ::close(fd);
        }
        return -1;
      },
      error);
  freeaddrinfo(found);
  return result;
}

}  // namespace

bool parseServerAddress(const QString& text, ServerAddress& address, QString& error) {
  const int colon = text.indexOf(QLatin1Char(':'));
  const QString kind = text.left(colon);
  address.place = colon < 0 ? QString() : text.mid(colon + 1);
  bool good = !address.place.isEmpty();
  if (kind == QLatin1String("fifo")) {
    address.kind = ServerAddress::Fifo;
  } else if (kind == QLatin1String("unix")) {
    address.kind = ServerAddress::Unix;
  } else if (kind == QLatin1String("tcp")) {
    address.kind = ServerAddress::Tcp;
    const int portColon = address.place.lastIndexOf(QLatin1Char(':'));
    address.port = address.place.mid(portColon + 1).toInt();
    good = portColon > 0 && address.port >= 1 && address.port <= 65535;
    address.place = address.place.left(portColon);
  } else {
    good = false;
  }
  if (!good) error = QStringLiteral("'%1' is no server: must be fifo:DIR, tcp:HOST:PORT or unix:PATH.").arg(text);
  return good;
}

std::unique_ptr<RemoteBitbang> RemoteBitbang::connect(const ServerAddress& address, double connectSeconds,
                                                      QString& error) {
  ignoreBrokenPipes();
  if (address.kind == ServerAddress::Fifo) {
    const int writeFd = openFifoForWriting(address.place + QLatin1String("/to_sim"), connectSeconds, error);
    if (writeFd < 0) return nullptr;
    const int readFd = openFifoForReading(address.place + QLatin1String("/from_sim"), error);
    if (readFd < 0) {
      ::close(writeFd);
      return nullptr;
    }
    return std::unique_ptr<RemoteBitbang>(new RemoteBitbang(writeFd, readFd, address.place));
  }
  const int fd = address.kind == ServerAddress::Unix ? connectUnix(address, connectSeconds, error)
                                                     : connectTcp(address, connectSeconds, error);
  if (fd < 0) return nullptr;
  return std::unique_ptr<RemoteBitbang>(new RemoteBitbang(fd, fd, address.place));
}

RemoteBitbang::RemoteBitbang(int writeFd, int readFd, const QString& place)
    : writeFd_(writeFd), readFd_(readFd), place_(place) {}

RemoteBitbang::~RemoteBitbang() {
  if (!broken_) {
    silenceSeconds_ = 1;
    kept_ += 'Q';
    QString ignored;
    exchange(nullptr, ignored);
  }
  ::close(writeFd_);
  if (readFd_ != writeFd_) ::close(readFd_);
}

bool RemoteBitbang::run(const QByteArray& tms, const QByteArray& tdi, QByteArray* tdo, QString& error) {
  if (broken_) return fail(QStringLiteral("the connection is closed"), error);
  for (int i = 0; i < tms.size(); ++i) {
    const char pins = static_cast<char>('0' + (tms[i] ? 2 : 0) + (tdi[i] ? 1 : 0));
    kept_ += pins;
    if (tdo) kept_ += 'R';
    kept_ += static_cast<char>(pins + 4);
  }
  if (tdo) {
    answersAwaited_ += tms.size();
    return exchange(tdo, error);
  }
  return kept_.size() < kKeepAtMost || exchange(nullptr, error);
}

bool RemoteBitbang::flush(QString& error) {
  return exchange(nullptr, error);
}

bool RemoteBitbang::exchange(QByteArray* tdo, QString& error) {
  if (broken_) return fail(QStringLiteral("the connection is closed"), error);
  int sent = 0;
  Clock::time_point lastMove = Clock::now();
  while (sent < kept_.size() || answersAwaited_ > 0) {
    pollfd entries[2] = {{writeFd_, static_cast<short>(sent < kept_.size() ? POLLOUT : 0), 0},
                         {readFd_, static_cast<short>(answersAwaited_ > 0 ? POLLIN : 0), 0}};
    if (::poll(entries, 2, 200) < 0 && errno != EINTR) return fail(systemText(errno), error);
    bool moved = false;
    if (entries[1].revents && answersAwaited_ > 0) {
      const int count = receive(tdo, error);
      if (count < 0) return false;
      // A FIFO that its writer has yet to open reads as ended too, but without a hang-up.
      if (count == 0 && (entries[1].revents & (POLLHUP | POLLERR)))
        return fail(QStringLiteral("it closed the connection"), error);
      moved = count > 0;
    }
    if (entries[0].revents && sent < kept_.size()) {
      const ssize_t count = ::write(writeFd_, kept_.constData() + sent, kept_.size() - sent);
      if (count < 0 && errno != EAGAIN && errno != EINTR)
        return fail(QStringLiteral("it has gone: ") + systemText(errno), error);
      if (count > 0) sent += static_cast<int>(count);
      moved = moved || count > 0;
    } else if (!moved && (entries[0].revents & POLLERR)) {
      return fail(QStringLiteral("it has gone"), error);
    }
    if (moved) {
      lastMove = Clock::now();
    } else if (secondsSince(lastMove) > silenceSeconds_) {
      return fail(QStringLiteral("it has not moved a byte for %1 s; is the simulation stopped?").arg(silenceSeconds_),
                  error);
    }
  }
  kept_.clear();
  return true;
}

int RemoteBitbang::receive(QByteArray* tdo, QString& error) {
  char buffer[4096];
  const ssize_t count = ::read(readFd_, buffer, qMin<int>(sizeof buffer, answersAwaited_));
  if (count < 0 && errno != EAGAIN && errno != EINTR) {
    fail(QStringLiteral("it closed the connection: ") + systemText(errno), error);
    return -1;
  }
  if (count <= 0) return 0;
  for (ssize_t i = 0; i < count; ++i) {
    if (buffer[i] != '0' && buffer[i] != '1') {
      const int code = static_cast<unsigned char>(buffer[i]);
      fail(QStringLiteral("it answered the byte 0x%1 instead of '0' or '1'; is it a remote-bitbang server?")
               .arg(code, 2, 16, QLatin1Char('0')),
           error);
      return -1;
    }
    if (tdo) *tdo += static_cast<char>(buffer[i] - '0');
  }
  answersAwaited_ -= static_cast<int>(count);
  return static_cast<int>(count);
}

bool RemoteBitbang::fail(const QString& text, QString& error) {
  broken_ = true;
  error = QStringLiteral("The JTAG server at '%1' failed: %2.").arg(place_, text);
  return false;
}

}  // namespace ost

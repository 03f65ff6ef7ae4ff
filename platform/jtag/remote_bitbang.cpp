// The connection to a remote-bitbang server. All descriptors are non-blocking, so that a server that stalls in either
// direction is noticed.
#include "platform/jtag/remote_bitbang.h"

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
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <thread>

#include "platform/system/files.h"

namespace ost {
namespace {

constexpr int kKeepAtMost = 1 << 16;  ///< Commands are sent when so many bytes are kept, even if nothing is read.

QString systemError() {
  return systemReason(errno);
}

/// Waits until an entry is ready, or for `seconds`. 0: none is ready yet. -1 with errno.
int pollFor(double seconds, pollfd* entries, int count) {
  const int ready = ::poll(entries, nfds_t(count), int(qBound(0.0, seconds, 1e6) * 1000) + 1);
  return ready < 0 && errno == EINTR ? 0 : ready;
}

void sleepMilliseconds(int milliseconds) {
  ::poll(nullptr, 0, milliseconds);
}

bool ignoreBrokenPipes(QString& error) {
  struct sigaction action;
  if (sigaction(SIGPIPE, nullptr, &action) == 0) {
    if (action.sa_handler != SIG_DFL) return true;
    action.sa_handler = SIG_IGN;
    if (sigaction(SIGPIPE, &action, nullptr) == 0) return true;
  }
  error = QStringLiteral("Cannot ignore the signal SIGPIPE: %1.").arg(systemError());
  return false;
}

/// Not open, with `code` and `error`, when it fails.
Descriptor openFifo(const QString& name, int access, int& code, QString& error) {
  Descriptor fifo(::open(name.toLatin1().constData(), access | O_NONBLOCK | O_CLOEXEC));
  code = fifo.isOpen() ? 0 : errno;
  struct stat info;
  if (!fifo.isOpen()) {
    error = QStringLiteral("Cannot open the FIFO \"%1\": %2.").arg(name, systemReason(code));
  } else if (fstat(fifo.fd(), &info) != 0 || !S_ISFIFO(info.st_mode)) {
    error = QStringLiteral("The file \"%1\" is not a FIFO; remove it and make one with mkfifo.").arg(name);
    fifo.reset();
  }
  return fifo;
}

/// Opens a FIFO for writing once a reader is there. Not open, with `error`, on failure.
Descriptor openFifoForWriting(const QString& name, const Deadline& deadline, QString& error) {
  for (;;) {
    int code = 0;
    Descriptor fifo = openFifo(name, O_WRONLY, code, error);
    if (fifo.isOpen() || (code != ENXIO && code != ENOENT && code != EINTR)) return fifo;
    if (deadline.isOver()) {
      error = (code == ENOENT ? QStringLiteral("There is no FIFO \"%1\"; make it with mkfifo and start the simulation.")
                              : QStringLiteral("No program reads the FIFO \"%1\"; start the simulation first."))
                  .arg(name);
      return fifo;
    }
    sleepMilliseconds(10);
  }
}

/// Connects `fd`, which does not block; 0 or the error number.
int connectSocket(int fd, const sockaddr* address, socklen_t length, const Deadline& deadline) {
  if (::connect(fd, address, length) == 0) return 0;
  if (errno != EINPROGRESS && errno != EINTR) return errno;
  pollfd entry = {fd, POLLOUT, 0};
  int ready = 0;
  do ready = pollFor(deadline.left(), &entry, 1);
  while (ready == 0 && !deadline.isOver());
  if (ready <= 0) return ready == 0 ? ETIMEDOUT : errno;
  int code = 0;
  socklen_t size = sizeof code;
  return getsockopt(fd, SOL_SOCKET, SO_ERROR, &code, &size) == 0 ? code : errno;
}

/// Repeats `attempt` (which gives 0 or an error number) until the server is up or time is over.
template <typename Attempt>
bool connectWithin(const Deadline& deadline, const QString& place, Attempt attempt, QString& error) {
  for (;;) {
    const int code = attempt();
    if (code == 0) return true;
    const bool mayCome = code == ECONNREFUSED || code == ENOENT || code == EAGAIN;
    if (!mayCome || deadline.isOver()) {
      error = QStringLiteral("Cannot connect to \"%1\": %2.").arg(place, systemReason(code));
      return false;
    }
    sleepMilliseconds(50);
  }
}

Descriptor connectUnix(const ServerAddress& address, const Deadline& deadline, QString& error) {
  Descriptor connection;
  sockaddr_un name = {};
  name.sun_family = AF_UNIX;
  const QByteArray file = address.place.toLatin1();
  if (file.size() >= static_cast<int>(sizeof name.sun_path)) {
    error = QStringLiteral("The socket name \"%1\" is too long; use a shorter path.").arg(address.place);
    return connection;
  }
  std::memcpy(name.sun_path, file.constData(), file.size());
  const auto attempt = [&] {
    connection.reset(::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (!connection.isOpen()) return errno;
    return connectSocket(connection.fd(), reinterpret_cast<sockaddr*>(&name), sizeof name, deadline);
  };
  if (!connectWithin(deadline, address.place, attempt, error)) connection.reset();
  return connection;
}

/// A lookup by the name service, which has no time limit: it runs in a thread that may be left behind.
struct Lookup {
  std::mutex mutex;
  std::condition_variable ended;
  bool isOver = false;
  int status = 0;
  addrinfo* found = nullptr;
  ~Lookup() {
    if (found) freeaddrinfo(found);
  }
};

std::shared_ptr<Lookup> lookUp(const ServerAddress& address, const Deadline& deadline, QString& error) {
  const auto lookup = std::make_shared<Lookup>();
  const QByteArray host = address.place.toLatin1(), port = QByteArray::number(address.port);
  std::thread([lookup, host, port] {
    addrinfo hints = {}, *found = nullptr;
    hints.ai_socktype = SOCK_STREAM;
    const int status = getaddrinfo(host.constData(), port.constData(), &hints, &found);
    const std::lock_guard<std::mutex> lock(lookup->mutex);
    lookup->status = status;
    lookup->found = status == 0 ? found : nullptr;
    lookup->isOver = true;
    lookup->ended.notify_all();
  }).detach();
  std::unique_lock<std::mutex> lock(lookup->mutex);
  const bool inTime = lookup->ended.wait_for(lock, std::chrono::duration<double>(qMax(0.0, deadline.left())),
                                             [&] { return lookup->isOver; });
  if (inTime && lookup->status == 0) return lookup;
  error = QStringLiteral("Cannot find the host \"%1\": %2.")
              .arg(address.place, inTime ? QString::fromLatin1(gai_strerror(lookup->status))
                                         : QStringLiteral("the name service does not respond"));
  return nullptr;
}

Descriptor connectTcp(const ServerAddress& address, const Deadline& deadline, QString& error) {
  Descriptor connection;
  const std::shared_ptr<Lookup> lookup = lookUp(address, deadline, error);
  if (!lookup) return connection;
  const auto attempt = [&] {
    int code = 0;
    for (const addrinfo* one = lookup->found; one; one = one->ai_next) {
      connection.reset(::socket(one->ai_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, one->ai_protocol));
      const int on = 1;
      code = !connection.isOpen() ? errno : connectSocket(connection.fd(), one->ai_addr, one->ai_addrlen, deadline);
      if (code == 0 && setsockopt(connection.fd(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on) != 0) code = errno;
      if (code == 0) break;
    }
    return code;
  };
  const QString place = address.place + QLatin1Char(':') + QString::number(address.port);
  if (!connectWithin(deadline, place, attempt, error)) connection.reset();
  return connection;
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
    bool isNumber = false;
    address.port = address.place.mid(portColon + 1).toInt(&isNumber);
    good = portColon > 0 && isNumber && address.port >= 1 && address.port <= 65535;
    address.place = address.place.left(portColon);
  } else {
    good = false;
  }
  if (!good)
    error =
        QStringLiteral("\"%1\" is not a server address; it must be fifo:DIR, tcp:HOST:PORT or unix:PATH.").arg(text);
  return good;
}

std::unique_ptr<RemoteBitbang> RemoteBitbang::connect(const ServerAddress& address, double connectSeconds,
                                                      QString& error) {
  if (!ignoreBrokenPipes(error)) return nullptr;
  const Deadline deadline(connectSeconds);
  Descriptor write, read;
  int code = 0;
  if (address.kind == ServerAddress::Fifo) {
    write = openFifoForWriting(address.place + QLatin1String("/to_sim"), deadline, error);
    if (write.isOpen()) read = openFifo(address.place + QLatin1String("/from_sim"), O_RDONLY, code, error);
    if (!read.isOpen()) return nullptr;
  } else {
    write = address.kind == ServerAddress::Unix ? connectUnix(address, deadline, error)
                                                : connectTcp(address, deadline, error);
    if (!write.isOpen()) return nullptr;
  }
  error.clear();  // Of earlier attempts.
  return std::unique_ptr<RemoteBitbang>(new RemoteBitbang(std::move(write), std::move(read), address.place));
}

RemoteBitbang::RemoteBitbang(Descriptor write, Descriptor read, const QString& place)
    : write_(std::move(write)), read_(std::move(read)), place_(place) {}

RemoteBitbang::~RemoteBitbang() {
  if (broken_) return;
  setSilenceLimit(1);
  setTimeLimit(1);
  kept_ += 'Q';
  QString ignored;
  exchange(nullptr, ignored);
}

void RemoteBitbang::setTimeLimit(double seconds) {
  deadline_ = std::make_unique<Deadline>(seconds);
  timeLimit_ = seconds;
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
    repliesDue_ += tms.size();
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
  const int replies = repliesDue_;
  double quiet = 0;
  for (;;) {
    const bool sending = sent < kept_.size();
    if (!sending && repliesDue_ == 0) break;
    const double left = deadline_ ? qMin(patience_, deadline_->left()) : patience_;
    if (left <= 0) {
      return failStalled(sending ? QStringLiteral("it accepted %1 of %2 commands").arg(sent).arg(kept_.size())
                                 : QStringLiteral("%1 of %2 replies came").arg(replies - repliesDue_).arg(replies),
                         quiet, error);
    }
    // A descriptor that is not waited for is left out: a hang-up there would end each wait at once.
    pollfd entries[2] = {{write_.fd(), static_cast<short>(sending ? POLLOUT : 0), 0},
                         {repliesDue_ == 0 ? -1 : readFd(), POLLIN, 0}};
    const Deadline::Clock::time_point before = Deadline::Clock::now();
    if (pollFor(left, entries, 2) < 0) return fail(systemError(), error);
    const double waited = std::chrono::duration<double>(Deadline::Clock::now() - before).count();
    patience_ -= waited;
    quiet += waited;
    qint64 moved = 0;
    if (entries[1].revents) {
      const int count = receive(entries[1].revents & (POLLHUP | POLLERR), tdo, error);
      if (count < 0) return false;
      moved += count;
    }
    if (sending && entries[0].revents) {
      const ssize_t count = ::write(write_.fd(), kept_.constData() + sent, kept_.size() - sent);
      if (count < 0 && errno != EAGAIN && errno != EINTR)
        return fail(QStringLiteral("it closed the connection: ") + systemError(), error);
      sent += qMax(0, static_cast<int>(count));
      moved += qMax(0, static_cast<int>(count));
    }
    if (moved == 0 && (entries[0].revents & (POLLERR | POLLHUP | POLLNVAL)))
      return fail(QStringLiteral("it closed the connection"), error);
    if (moved > 0) quiet = 0;
    patience_ = qMin(silenceSeconds_, patience_ + double(moved) * silenceSeconds_ / kFewestBytes);
  }
  kept_.clear();
  return true;
}

int RemoteBitbang::receive(bool hangUp, QByteArray* tdo, QString& error) {
  char buffer[4096];
  const ssize_t count = ::read(readFd(), buffer, qMin<int>(sizeof buffer, repliesDue_));
  if (count < 0 && (errno == EAGAIN || errno == EINTR)) return 0;
  // A FIFO that its writer has not opened yet reads as ended, too, but without a hang-up.
  if (count == 0 && !isSocket() && !hangUp) return 0;
  if (count <= 0) {
    const QString reason = count < 0 ? QStringLiteral(": ") + systemError() : QString();
    fail(QStringLiteral("it closed the connection with %1 replies outstanding%2")
             .arg(QString::number(repliesDue_), reason),
         error);
    return -1;
  }
  for (ssize_t i = 0; i < count; ++i) {
    if (buffer[i] != '0' && buffer[i] != '1') {
      const int code = static_cast<unsigned char>(buffer[i]);
      fail(QStringLiteral("it replied with the byte 0x%1 instead of \"0\" or \"1\"; is it a remote-bitbang server?")
               .arg(code, 2, 16, QLatin1Char('0')),
           error);
      return -1;
    }
    if (tdo) *tdo += static_cast<char>(buffer[i] - '0');
  }
  repliesDue_ -= static_cast<int>(count);
  return static_cast<int>(count);
}

bool RemoteBitbang::failStalled(const QString& progress, double quiet, QString& error) {
  const QString why =
      patience_ > 0 ? QStringLiteral("it was not done within its %1 s").arg(timeLimit_)
      : quiet >= silenceSeconds_
          ? QStringLiteral("it has transferred no byte for %1 s").arg(silenceSeconds_)
          : QStringLiteral("it transfers fewer than %1 bytes in %2 s").arg(kFewestBytes).arg(silenceSeconds_);
  return fail(QStringLiteral("%1 (%2); is the simulation stopped?").arg(why, progress), error);
}

bool RemoteBitbang::fail(const QString& text, QString& error) {
  broken_ = true;
  error = QStringLiteral("The JTAG server at \"%1\" failed: %2").arg(place_, text);
  if (!error.endsWith(QLatin1Char('?'))) error += QLatin1Char('.');
  return false;
}

}  // namespace ost

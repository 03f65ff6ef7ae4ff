// FIFOs and sockets that do not block, so that a server that stalls in either direction is noticed.
#include "platform/jtag/open_server.h"

#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <cerrno>
#include <condition_variable>
#include <cstring>
#include <memory>
#include <mutex>
#include <thread>

#include "platform/system/files.h"
#include "platform/system/interrupt.h"

namespace ost {
namespace {

void sleepMilliseconds(int milliseconds) {
  ::poll(nullptr, 0, milliseconds);
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
    if (deadline.isOver() || isInterrupted()) {
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
    if (!mayCome || deadline.isOver() || isInterrupted()) {
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
  if (!connectWithin(deadline, address.text(), attempt, error)) connection.reset();
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
  if (!connectWithin(deadline, address.text(), attempt, error)) connection.reset();
  return connection;
}

}  // namespace

int pollFor(double seconds, pollfd* entries, int count) {
  const int ready = ::poll(entries, nfds_t(count), int(qBound(0.0, seconds, 1e6) * 1000) + 1);
  return ready < 0 && errno == EINTR ? 0 : ready;
}

bool ignoreBrokenPipes(QString& error) {
  struct sigaction action;
  if (sigaction(SIGPIPE, nullptr, &action) == 0) {
    if (action.sa_handler != SIG_DFL) return true;
    action.sa_handler = SIG_IGN;
    if (sigaction(SIGPIPE, &action, nullptr) == 0) return true;
  }
  error = QStringLiteral("Cannot ignore the signal SIGPIPE: %1.").arg(systemReason(errno));
  return false;
}

bool openServer(const ServerAddress& address, const Deadline& deadline, ServerDescriptors& server, QString& error) {
  int code = 0;
  switch (address.kind) {
    case ServerAddress::Fifo:
      server.write = openFifoForWriting(address.place + QLatin1String("/to_sim"), deadline, error);
      if (server.write.isOpen())
        server.read = openFifo(address.place + QLatin1String("/from_sim"), O_RDONLY, code, error);
      return server.read.isOpen();
    case ServerAddress::Unix:
      server.write = connectUnix(address, deadline, error);
      break;
    case ServerAddress::Tcp:
      server.write = connectTcp(address, deadline, error);
      break;
  }
  return server.write.isOpen();
}

}  // namespace ost

// One poll loop between a client's socket and the simulation's FIFOs. Each direction keeps a bounded piece; who does
// not take it stops the other side. A client that leaves with answers due leaves them to be thrown away.
#include "platform/jtag/simulation_server.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

#include "platform/jtag/served_cable.h"
#include "platform/system/files.h"

namespace ost {
namespace {

constexpr int kMostKept = 1 << 16;    ///< Bytes on their way in one direction.
constexpr double kPollSeconds = 0.1;  ///< Between looks at `goOn`.
constexpr double kStartSeconds = 10;  ///< For the simulation to open its FIFOs.

Descriptor listenOn(int port, int& given, QString& error) {
  sockaddr_in name = {};
  name.sin_family = AF_INET;
  name.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  name.sin_port = htons(static_cast<uint16_t>(port));
  socklen_t size = sizeof name;
  sockaddr* const place = reinterpret_cast<sockaddr*>(&name);
  const int on = 1;
  Descriptor listener(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  if (!listener.isOpen() || setsockopt(listener.fd(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) != 0 ||
      bind(listener.fd(), place, size) != 0 || listen(listener.fd(), 1) != 0 ||
      getsockname(listener.fd(), place, &size) != 0) {
    error =
        QStringLiteral("Cannot listen on the port %1 of the loopback address: %2.").arg(port).arg(systemReason(errno));
    listener.reset();
  }
  given = ntohs(name.sin_port);
  return listener;
}

/// Appends what is there to `kept`. False at the end of the stream.
bool takeFrom(int fd, QByteArray& kept) {
  char buffer[4096];
  const ssize_t count = ::read(fd, buffer, sizeof buffer);
  if (count > 0) kept.append(buffer, static_cast<int>(count));
  return count > 0 || (count < 0 && (errno == EAGAIN || errno == EINTR));
}

/// Writes what the other end takes, and removes it from `kept`; what was written. -1 when nobody is there.
int giveTo(int fd, QByteArray& kept) {
  const ssize_t count = ::write(fd, kept.constData(), size_t(kept.size()));
  if (count < 0) return errno == EAGAIN || errno == EINTR ? 0 : -1;
  kept.remove(0, static_cast<int>(count));
  return static_cast<int>(count);
}

class Relay {
 public:
  Relay(Descriptor listener, ServerDescriptors simulation, ServerAddress::Protocol protocol)
      : listener_(std::move(listener)), simulation_(std::move(simulation)), protocol_(protocol) {}
  /// Moves what can be moved. False when the simulation is gone or, with errno, the system refuses.
  bool step();

 private:
  void accept();
  void dropClient() {
    client_.reset();
    toSimulation_.clear();
    toClient_.clear();
    leaving_ = false;
  }
  void takeCommands();
  bool giveCommands();
  bool takeAnswers();

  Descriptor listener_, client_;
  ServerDescriptors simulation_;
  const ServerAddress::Protocol protocol_;
  std::unique_ptr<ServedCable> cable_;  ///< Of the client.
  QByteArray toSimulation_, toClient_;
  qint64 due_ = 0;        ///< Answers that the simulation owes.
  bool leaving_ = false;  ///< The client has said good-bye, and waits for what it asked for before.
};

void Relay::accept() {
  client_.reset(::accept4(listener_.fd(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
  const int on = 1;
  if (client_.isOpen() && setsockopt(client_.fd(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on) != 0) client_.reset();
  cable_ = makeServedCable(protocol_);
}

void Relay::takeCommands() {
  QByteArray bytes;
  if (!takeFrom(client_.fd(), bytes)) return dropClient();
  leaving_ = !cable_->take(bytes, toSimulation_, toClient_);
}

bool Relay::giveCommands() {
  const QByteArray before = toSimulation_;
  const int given = giveTo(simulation_.write.fd(), toSimulation_);
  for (int i = 0; i < given; ++i) due_ += before[i] == 'R';
  return given >= 0;
}

bool Relay::takeAnswers() {
  QByteArray answers;
  if (!takeFrom(simulation_.read.fd(), answers)) return false;
  due_ -= answers.size();
  if (client_.isOpen() && !cable_->answer(answers, toSimulation_, toClient_)) leaving_ = true;
  return true;
}

bool Relay::step() {
  if (leaving_ && toSimulation_.isEmpty() && toClient_.isEmpty() && due_ <= 0) dropClient();
  const bool takes = client_.isOpen() && !leaving_ && toSimulation_.size() < kMostKept && toClient_.size() < kMostKept;
  const int clientEvents = (takes ? POLLIN : 0) | (toClient_.isEmpty() ? 0 : POLLOUT);
  pollfd entries[] = {{!client_.isOpen() && due_ <= 0 ? listener_.fd() : -1, POLLIN, 0},
                      {clientEvents ? client_.fd() : -1, static_cast<short>(clientEvents), 0},
                      {simulation_.write.fd(), static_cast<short>(toSimulation_.isEmpty() ? 0 : POLLOUT), 0},
                      {toClient_.size() < kMostKept ? simulation_.read.fd() : -1, POLLIN, 0}};
  const int ready = pollFor(kPollSeconds, entries, 4);
  if (ready <= 0) return ready == 0;
  if (entries[3].revents && !takeAnswers()) return false;
  if (entries[2].revents & (POLLERR | POLLHUP)) return false;
  if (entries[2].revents && !giveCommands()) return false;
  if ((entries[1].revents & POLLOUT) && giveTo(client_.fd(), toClient_) < 0) dropClient();
  if (client_.isOpen() && (entries[1].revents & ~POLLOUT)) takeCommands();
  if (entries[0].revents) accept();
  return true;
}

}  // namespace

bool serveSimulation(Simulation& simulation, ServerAddress::Protocol protocol, int port,
                     const std::function<void(int port)>& announce, const std::function<bool()>& goOn, QString& error) {
  ServerDescriptors pins;
  int given = 0;
  Descriptor listener = listenOn(port, given, error);
  if (!listener.isOpen() || !ignoreBrokenPipes(error) || !simulation.open(pins, kStartSeconds, error)) return false;
  announce(given);
  Relay relay(std::move(listener), std::move(pins), protocol);
  while (goOn()) {
    if (relay.step()) continue;
    error = simulation.hasEnded(1) ? simulation.endText()
                                   : QStringLiteral("The way to the simulation failed: %1.").arg(systemReason(errno));
    return false;
  }
  return true;
}

}  // namespace ost

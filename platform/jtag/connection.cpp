// The exchange loop: one poll for both directions, and the account of a server's patience.
#include "platform/jtag/connection.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>

#include "platform/jtag/answers.h"
#include "platform/system/files.h"

namespace ost {
namespace {

QString systemError() {
  return systemReason(errno);
}

}  // namespace

QString quotable(const QByteArray& text) {
  QByteArray line = text.trimmed();
  const int end = line.indexOf('\n');
  if (end >= 0) line.truncate(end);
  if (line.size() > 200) line = line.left(198) + "..";
  for (char& c : line)
    if (c < ' ' || c > '~') c = '?';
  return QString::fromLatin1(line);
}

std::unique_ptr<Connection> Connection::open(const ServerAddress& address, double seconds, QString& error) {
  ServerDescriptors server;
  if (!ignoreBrokenPipes(error) || !openServer(address, Deadline(seconds), server, error)) return nullptr;
  error.clear();  // Of earlier attempts.
  return std::unique_ptr<Connection>(new Connection(std::move(server), address.text()));
}

void Connection::setTimeLimit(double seconds) {
  deadline_ = std::make_unique<Deadline>(seconds);
  timeLimit_ = seconds;
}

bool Connection::exchange(const QByteArray& bytes, Answer* answer, QString& error) {
  if (broken_) return fail(QStringLiteral("the connection is closed"), error);
  int sent = 0, unasked = 0;
  double quiet = 0;
  // Each answer was awaited whole: what is here before the question would be taken for its answer.
  if (answer && ioctl(readFd(), FIONREAD, &unasked) == 0 && unasked > 0)
    return fail(QStringLiteral("it replied with more than it was asked for"), error);
  for (;;) {
    const bool sending = sent < bytes.size(), receiving = answer && answer->due() > 0;
    if (!sending && !receiving) return true;
    const double left = deadline_ ? qMin(patience_, deadline_->left()) : patience_;
    if (left <= 0) {
      return failStalled(
          sending ? QStringLiteral("it accepted %1 of %2 bytes").arg(sent).arg(bytes.size()) : answer->progress(),
          quiet, error);
    }
    // What is not waited for stays out of it: a hang-up there would end each wait at once.
    pollfd entries[2] = {{server_.write.fd(), static_cast<short>(sending ? POLLOUT : 0), 0},
                         {receiving ? readFd() : -1, POLLIN, 0}};
    const Deadline::Clock::time_point before = Deadline::Clock::now();
    if (pollFor(left, entries, 2) < 0) return fail(systemError(), error);
    const double waited = std::chrono::duration<double>(Deadline::Clock::now() - before).count();
    patience_ -= waited;
    quiet += waited;
    qint64 moved = 0;
    if (entries[1].revents) {
      const int count = receive(entries[1].revents & (POLLHUP | POLLERR), *answer, error);
      if (count < 0) return false;
      moved += count;
    }
    if (sending && entries[0].revents) {
      const ssize_t count = ::write(server_.write.fd(), bytes.constData() + sent, size_t(bytes.size() - sent));
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
}

int Connection::receive(bool hangUp, Answer& answer, QString& error) {
  char buffer[4096];
  const ssize_t count = ::read(readFd(), buffer, size_t(qMin<int>(sizeof buffer, answer.due())));
  if (count < 0 && (errno == EAGAIN || errno == EINTR)) return 0;
  // A FIFO that its writer has yet to open reads as ended too, but without a hang-up.
  if (count == 0 && !isSocket() && !hangUp) return 0;
  if (count <= 0) {
    const QString reason = count < 0 ? QStringLiteral(": ") + systemError() : QString();
    fail(QStringLiteral("it closed the connection (%1)%2").arg(answer.progress(), reason), error);
    return -1;
  }
  const QString fault = answer.take(buffer, static_cast<int>(count));
  if (fault.isEmpty()) return static_cast<int>(count);
  fail(fault, error);
  return -1;
}

bool Connection::failStalled(const QString& progress, double quiet, QString& error) {
  const QString why =
      patience_ > 0 ? QStringLiteral("it was not done within its %1 s").arg(timeLimit_)
      : quiet >= silenceSeconds_
          ? QStringLiteral("it has transferred no byte for %1 s").arg(silenceSeconds_)
          : QStringLiteral("it transfers fewer than %1 bytes in %2 s").arg(kFewestBytes).arg(silenceSeconds_);
  return fail(QStringLiteral("%1 (%2); is the simulation stopped?").arg(why, progress), error);
}

bool Connection::fail(const QString& text, QString& error) {
  broken_ = true;
  error = QStringLiteral("The JTAG server at \"%1\" failed: %2").arg(place_, text);
  if (!error.endsWith(QLatin1Char('?')) && !error.endsWith(QLatin1Char('.'))) error += QLatin1Char('.');
  return false;
}

}  // namespace ost

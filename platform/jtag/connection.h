// The open way to a server, with limits on its silence: bytes go out while those of the answer come in.
#pragma once

#include <QByteArray>
#include <memory>

#include "platform/jtag/open_server.h"

namespace ost {

/// What is expected in answer of what is sent.
class Answer {
 public:
  virtual ~Answer() = default;
  virtual int due() const = 0;  ///< Bytes that may still come; 0 when it is complete.
  /// Takes at most due() bytes. Empty, or what is wrong with them.
  virtual QString take(const char* bytes, int count) = 0;
  virtual QString progress() const = 0;  ///< How far it came: "3 of 8 replies came".
};

class Connection {
 public:
  /// Waits up to `seconds` for the server to be there. Null with the reason in `error`. Writing to a server that has
  /// gone must fail, not kill the process, so SIGPIPE is ignored from here on.
  static std::unique_ptr<Connection> open(const ServerAddress& address, double seconds, QString& error);

  /// A server that moves no byte for this long, or fewer than kFewestBytes in it for long, is taken as gone.
  void setSilenceLimit(double seconds) { silenceSeconds_ = patience_ = seconds; }
  /// From now on an exchange fails when it is still under way in `seconds` from now. None is set at first.
  void setTimeLimit(double seconds);
  void liftTimeLimit() { deadline_.reset(); }

  /// Sends `bytes` while it collects `answer`, which is null when none is due. Whatever fails is final.
  bool exchange(const QByteArray& bytes, Answer* answer, QString& error);
  /// Sets `error` to a sentence that names the server, and gives the connection up. Always false.
  bool fail(const QString& text, QString& error);
  bool isBroken() const { return broken_; }

  static constexpr int kFewestBytes = 150;

 private:
  Connection(ServerDescriptors server, const QString& place) : server_(std::move(server)), place_(place) {}
  bool isSocket() const { return !server_.read.isOpen(); }
  int readFd() const { return isSocket() ? server_.write.fd() : server_.read.fd(); }
  /// Takes what is there, without waiting. -1 when the server is of no more use. `hangUp`: the other end is closed,
  /// behind what is still there.
  int receive(bool hangUp, Answer& answer, QString& error);
  /// `progress`: how far the exchange came; `quiet`: seconds since a byte moved.
  bool failStalled(const QString& progress, double quiet, QString& error);

  ServerDescriptors server_;
  QString place_;
  double silenceSeconds_ = 30;
  double patience_ = 30;  ///< Seconds left to the server. Waiting uses them up, bytes bring them back.
  std::unique_ptr<Deadline> deadline_;
  double timeLimit_ = 0;  ///< What the deadline was set to, for its text.
  bool broken_ = false;
};

}  // namespace ost

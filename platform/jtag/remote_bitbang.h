// Client of a remote-bitbang server: a simulator's test bench over two FIFOs, or an adapter's server on a socket.
#pragma once

#include <chrono>
#include <memory>

#include "platform/jtag/jtag_port.h"
#include "platform/system/descriptor.h"

namespace ost {

/// Where a server is: "fifo:DIR" (the FIFOs DIR/to_sim and DIR/from_sim), "tcp:HOST:PORT" or "unix:PATH".
struct ServerAddress {
  enum Kind { Fifo, Tcp, Unix };
  Kind kind = Fifo;
  QString place;  ///< Folder, host name or socket file.
  int port = 0;   ///< Tcp only, 1 to 65535.
};

/// False with a text that names the accepted forms.
bool parseServerAddress(const QString& text, ServerAddress& address, QString& error);

/// A point in time by which something must be finished.
class Deadline {
 public:
  using Clock = std::chrono::steady_clock;
  explicit Deadline(double seconds)
      : end_(Clock::now() + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds))) {}
  double left() const { return std::chrono::duration<double>(end_ - Clock::now()).count(); }  ///< Seconds.
  bool isOver() const { return left() <= 0; }

 private:
  Clock::time_point end_;
};

class RemoteBitbang : public JtagPort {
 public:
  /// Waits up to `connectSeconds` for the server to start, and for the name service to find it. Null with the reason in
  /// `error`. Writing to a server that has ended must fail, not kill the process, so SIGPIPE is ignored from here on.
  static std::unique_ptr<RemoteBitbang> connect(const ServerAddress& address, double connectSeconds, QString& error);
  /// Sends the end of the connection ("Q") if the server still exists; takes a second at most.
  ~RemoteBitbang() override;

  /// A server that transfers no byte for this long, or persistently fewer than kFewestBytes in it, is given up.
  void setSilenceLimit(double seconds) { silenceSeconds_ = patience_ = seconds; }
  /// An exchange that is still under way `seconds` from now fails. At first there is no limit.
  void setTimeLimit(double seconds);
  void liftTimeLimit() { deadline_.reset(); }

  bool run(const QByteArray& tms, const QByteArray& tdi, QByteArray* tdo, QString& error) override;
  bool flush(QString& error) override;

  static constexpr int kFewestBytes = 150;

 private:
  RemoteBitbang(Descriptor write, Descriptor read, const QString& place);
  bool isSocket() const { return !read_.isOpen(); }
  int readFd() const { return isSocket() ? write_.fd() : read_.fd(); }
  /// Sends everything kept while it collects the outstanding replies into `tdo`.
  bool exchange(QByteArray* tdo, QString& error);
  /// Takes the replies that have arrived, without waiting. -1 when the server is of no more use. `hangUp`: the other
  /// end is closed; data may still precede that.
  int receive(bool hangUp, QByteArray* tdo, QString& error);
  /// `progress`: how far the exchange got; `quiet`: seconds since a byte was transferred.
  bool failStalled(const QString& progress, double quiet, QString& error);
  bool fail(const QString& text, QString& error);

  Descriptor write_;
  Descriptor read_;  ///< Not open for a socket, which is read and written through `write_`.
  QString place_;
  double silenceSeconds_ = 30;
  double patience_ = 30;  ///< Seconds left to the server: waiting uses them up, transferred bytes restore them.
  std::unique_ptr<Deadline> deadline_;
  double timeLimit_ = 0;  ///< What the deadline was set to, for its text.
  bool broken_ = false;
  QByteArray kept_;  ///< Commands not sent yet.
  int repliesDue_ = 0;
};

}  // namespace ost

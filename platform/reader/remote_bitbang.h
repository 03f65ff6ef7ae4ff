// The client of a remote-bitbang server: a simulator's test bench over two FIFOs, or an adapter's server on a socket.
#pragma once

#include <memory>

#include "platform/reader/jtag_port.h"

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

class RemoteBitbang : public JtagPort {
 public:
  /// Waits up to `connectSeconds` for the server to be there. Null with the reason in `error`. Writing to a server that
  /// has gone must fail, not kill the process, so SIGPIPE is ignored from here on.
  static std::unique_ptr<RemoteBitbang> connect(const ServerAddress& address, double connectSeconds, QString& error);
  /// Says good-bye ("Q") when the server is still there.
  ~RemoteBitbang() override;

  /// A server that moves no byte for this long is taken as gone.
  void setSilenceLimit(double seconds) { silenceSeconds_ = seconds; }

  bool run(const QByteArray& tms, const QByteArray& tdi, QByteArray* tdo, QString& error) override;
  bool flush(QString& error) override;

 private:
  RemoteBitbang(int writeFd, int readFd, const QString& place);
  /// Sends everything kept while it collects the answers awaited into `tdo`.
  bool exchange(QByteArray* tdo, QString& error);
  /// Takes what answers are there, without waiting. -1 when the server is of no more use.
  int receive(QByteArray* tdo, QString& error);
  bool fail(const QString& text, QString& error);

  int writeFd_;
  int readFd_;
  QString place_;
  double silenceSeconds_ = 30;
  bool broken_ = false;
  QByteArray kept_;  ///< Commands not sent yet.
  int answersAwaited_ = 0;
};

}  // namespace ost

// Client of a remote-bitbang server: a simulator's test bench over two FIFOs, or an adapter's server on a socket.
#pragma once

#include "platform/jtag/connection.h"
#include "platform/jtag/jtag_port.h"

namespace ost {

class RemoteBitbang : public JtagPort {
 public:
  /// `connection` must outlive it.
  explicit RemoteBitbang(Connection& connection) : connection_(connection) {}
  /// Says good-bye ("Q") when the server is still there; takes a second at most.
  ~RemoteBitbang() override;

  bool run(const QByteArray& tms, const QByteArray& tdi, QByteArray* tdo, QString& error) override;
  bool flush(QString& error) override;

 private:
  Connection& connection_;
  QByteArray kept_;  ///< Commands not sent yet.
};

}  // namespace ost

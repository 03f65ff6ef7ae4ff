// What a client of a served simulation speaks: its bytes become pin changes of the simulation, and TDO its replies.
#pragma once

#include <QByteArray>
#include <memory>

#include "platform/jtag/server_address.h"

namespace ost {

/// The state of one client's connection.
class ServedCable {
 public:
  virtual ~ServedCable() = default;

  /// What the client said. Appends to `commands` the remote-bitbang characters for the simulation, each "R" of which
  /// asks for a level, and to `replies` what can be told at once. False when the client leaves, or says what is not of
  /// its protocol: the replies that are due are the last.
  virtual bool take(const QByteArray& bytes, QByteArray& commands, QByteArray& replies) = 0;
  /// Levels of TDO that were asked for, as the digits 0 and 1; the rest as with `take`.
  virtual bool answer(const QByteArray& levels, QByteArray& commands, QByteArray& replies) = 0;
};

/// For RemoteBitbang or Xvc.
std::unique_ptr<ServedCable> makeServedCable(ServerAddress::Protocol protocol);

}  // namespace ost

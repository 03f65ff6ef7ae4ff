// From a server's address to a TAP behind it, whatever the server speaks.
#pragma once

#include "platform/jtag/connection.h"
#include "platform/jtag/jtag_port.h"
#include "platform/jtag/tap_driver.h"

namespace ost {

/// Which TAP behind the server is meant.
struct TapChoice {
  ChainPlace place;    ///< For servers that move pins.
  quint32 idcode = 0;  ///< For those that know the chain.
};

/// A TAP with all that it stands on.
struct ConnectedTap {
  std::unique_ptr<Connection> connection;  ///< Has the limits of time.
  std::unique_ptr<JtagPort> port;          ///< Null when the server takes whole scans.
  std::unique_ptr<Tap> tap;                ///< Null after a failure.

  ConnectedTap() = default;
  ConnectedTap(ConnectedTap&&) = default;
  /// Lets go of what stands on the connection first.
  ConnectedTap& operator=(ConnectedTap&& other) noexcept {
    tap = std::move(other.tap);
    port = std::move(other.port);
    connection = std::move(other.connection);
    return *this;
  }
};

/// Waits up to `seconds` for the server to be there. Without a tap, and with the reason in `error`, on failure.
ConnectedTap connectTap(const ServerAddress& address, const TapChoice& choice, double seconds, QString& error);

}  // namespace ost

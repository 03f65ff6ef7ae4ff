// The table of protocols, as code.
#include "platform/jtag/connect_tap.h"

#include "platform/jtag/openocd.h"
#include "platform/jtag/remote_bitbang.h"
#include "platform/jtag/xvc.h"

namespace ost {

ConnectedTap connectTap(const ServerAddress& address, const TapChoice& choice, double seconds, QString& error) {
  ConnectedTap way;
  way.connection = Connection::open(address, seconds, error);
  if (!way.connection) return way;
  switch (address.protocol) {
    case ServerAddress::OpenOcd: {
      auto tap = std::make_unique<OpenOcdTap>(*way.connection);
      if (tap->open(address.tap, choice.idcode, error)) way.tap = std::move(tap);
      return way;
    }
    case ServerAddress::Xvc: {
      auto port = std::make_unique<XvcPort>(*way.connection);
      if (!port->open(error)) return way;
      way.port = std::move(port);
      break;
    }
    case ServerAddress::RemoteBitbang:
      way.port = std::make_unique<RemoteBitbang>(*way.connection);
      break;
  }
  way.tap = std::make_unique<TapDriver>(*way.port, choice.place);
  return way;
}

}  // namespace ost

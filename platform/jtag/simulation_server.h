// A launched simulation offered to other programs as a cable: a server in front of its FIFOs.
#pragma once

#include <functional>

#include "platform/jtag/simulation.h"

namespace ost {

/// Serves one client after the other, by RemoteBitbang or Xvc, on the loopback address until `goOn` is false; a
/// client's good-bye ends its connection, not the simulation. `announce` gets the port once it is open; `port` 0 takes
/// a free one. False with the reason in `error`, also when the simulation ends.
bool serveSimulation(Simulation& simulation, ServerAddress::Protocol protocol, int port,
                     const std::function<void(int port)>& announce, const std::function<bool()>& goOn, QString& error);

}  // namespace ost

// Opening the way to a server: FIFOs of a simulation, or a socket.
#pragma once

#include "platform/jtag/server_address.h"
#include "platform/system/deadline.h"
#include "platform/system/descriptor.h"

struct pollfd;

namespace ost {

/// Both without blocking; `read` is not open for a socket, which is read where it is written.
struct ServerDescriptors {
  Descriptor write, read;
};

/// Waits until the deadline for the server to be there, and for the name service to find it. False with `error`.
bool openServer(const ServerAddress& address, const Deadline& deadline, ServerDescriptors& server, QString& error);

/// Writing to a server that has gone must fail, not kill the process: ignores SIGPIPE, unless it is handled already.
bool ignoreBrokenPipes(QString& error);

/// Waits until one of the entries is ready, or for `seconds`. 0: none is (yet). -1 with errno.
int pollFor(double seconds, pollfd* entries, int count);

}  // namespace ost

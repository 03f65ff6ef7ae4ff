// Where a JTAG server is and what it speaks, in one word.
#pragma once

#include <QString>

namespace ost {

/// "fifo:DIR" (the FIFOs DIR/to_sim and DIR/from_sim), "tcp:HOST:PORT" and "unix:PATH" are remote-bitbang servers,
/// "xvc:HOST:PORT" is a server of virtual cables, "openocd:HOST:PORT" or "openocd:HOST:PORT/TAP" the Tcl port of
/// OpenOCD.
struct ServerAddress {
  enum Kind { Fifo, Tcp, Unix };
  enum Protocol { RemoteBitbang, Xvc, OpenOcd };
  Kind kind = Fifo;
  QString place;  ///< Folder, host name or socket file.
  int port = 0;   ///< Tcp only, 1 to 65535.
  Protocol protocol = RemoteBitbang;
  QString tap = QString();  ///< OpenOcd only; empty: to be found.

  /// As messages name it: HOST:PORT or the path.
  QString text() const;
};

/// False with a text that names the accepted forms.
bool parseServerAddress(const QString& text, ServerAddress& address, QString& error);

}  // namespace ost

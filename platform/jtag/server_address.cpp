// Addresses of JTAG servers, by their first word.
#include "platform/jtag/server_address.h"

namespace ost {
namespace {

const struct {
  const char* word;
  ServerAddress::Kind kind;
  ServerAddress::Protocol protocol;
} kForms[] = {{"fifo", ServerAddress::Fifo, ServerAddress::RemoteBitbang},
              {"unix", ServerAddress::Unix, ServerAddress::RemoteBitbang},
              {"tcp", ServerAddress::Tcp, ServerAddress::RemoteBitbang},
              {"xvc", ServerAddress::Tcp, ServerAddress::Xvc},
              {"openocd", ServerAddress::Tcp, ServerAddress::OpenOcd}};

/// Splits "HOST:PORT"; a host may hold colons.
bool splitPort(ServerAddress& address) {
  const int colon = address.place.lastIndexOf(QLatin1Char(':'));
  bool isNumber = false;
  address.port = address.place.mid(colon + 1).toInt(&isNumber);
  address.place = address.place.left(qMax(0, colon));
  return !address.place.isEmpty() && isNumber && address.port >= 1 && address.port <= 65535;
}

}  // namespace

QString ServerAddress::text() const {
  return kind == Tcp ? place + QLatin1Char(':') + QString::number(port) : place;
}

bool parseServerAddress(const QString& text, ServerAddress& address, QString& error) {
  const int colon = text.indexOf(QLatin1Char(':'));
  address = ServerAddress();
  address.place = text.mid(colon + 1);
  bool good = false;
  for (const auto& form : kForms) {
    if (colon < 0 || text.left(colon) != QLatin1String(form.word)) continue;
    address.kind = form.kind;
    address.protocol = form.protocol;
    good = !address.place.isEmpty();
  }
  const int slash = address.protocol == ServerAddress::OpenOcd ? address.place.indexOf(QLatin1Char('/')) : -1;
  if (slash >= 0) {
    address.tap = address.place.mid(slash + 1);
    address.place = address.place.left(slash);
    good = good && !address.tap.isEmpty();
  }
  if (address.kind == ServerAddress::Tcp) good = splitPort(address) && good;
  if (!good)
    error = QStringLiteral(
                "\"%1\" is not a server address; it must be fifo:DIR, tcp:HOST:PORT, unix:PATH, xvc:HOST:PORT or "
                "openocd:HOST:PORT[/TAP].")
                .arg(text);
  return good;
}

}  // namespace ost

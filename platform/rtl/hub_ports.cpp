// The hub's side of a core's instance.
#include "platform/rtl/hub_ports.h"

namespace ost {

using namespace verilog;

QList<Connection> hubPorts(int number) {
  QList<Connection> ports = {{"tck", "h_tck"}, {"tdi", "h_tdi"}};
  const QByteArray bit = "[" + verilog::number(number) + "]";
  ports.append({"select", "h_select" + bit});
  for (const char* shared : {"op_status", "op_info", "op_read", "op_config", "op_table", "op_arm", "op_stop", "data",
                             "tag", "address", "index", "load", "fetch", "execute"})
    ports.append({shared, QByteArray("h_") + shared});
  for (const char* own : {"permit", "word_last", "block_end", "payload"})
    ports.append({own, QByteArray("h_") + own + bit});
  ports.append({"flags", slice("h_flags", 5 * number, 5)});
  return ports;
}

QByteArray infoConstant(CoreKind kind, const QList<QPair<int, qint64>>& fields) {
  QByteArray text = "8'd" + number(int(kind)) + "}";
  for (const auto& [width, value] : fields)
    text = number(width) + "'d" + number(value & ((qint64(1) << width) - 1)) + ", " + text;
  return "{" + text;
}

}  // namespace ost

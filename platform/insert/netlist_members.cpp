// Text of ports and nets.
#include "platform/insert/netlist_members.h"

#include "platform/netlist/netlist_text.h"

namespace ost {

QByteArray binary32(int number) {
  return QByteArray::number(number, 2).rightJustified(32, '0');
}

QByteArray portText(const QByteArray& name, const char* direction, const QVector<int>& bits) {
  return ",\n        " + quoteJson(name) + ": { \"direction\": \"" + direction + "\", \"bits\": " + bitListText(bits) +
         " }";
}

QByteArray netText(const QByteArray& name, const QVector<int>& bits, bool keep) {
  return ",\n        " + quoteJson(name) + ": { \"hide_name\": 0, \"bits\": " + bitListText(bits) +
         ", \"attributes\": { " + (keep ? "\"keep\": \"" + binary32(1) + "\" " : QByteArray()) + "} }";
}

}  // namespace ost

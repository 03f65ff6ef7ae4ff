// The names that an enumerated type of the source gives to values.
#pragma once

#include <QByteArray>
#include <QString>
#include <QVector>
#include <algorithm>

namespace ost {

struct EnumName {
  QString name;          ///< Byte text, as the source declares it.
  QByteArray bits;       ///< '0' and '1', least significant first; as wide as the net.
  bool anyCase = false;  ///< Of VHDL.
};

/// Each name once, in the order of the values; empty for a net of no such type.
using EnumNames = QVector<EnumName>;

/// The value of a name, or null. Names of a type in a package are kept as in `pkg::IDLE`, and found as `IDLE`, too.
inline const EnumName* findEnumName(const EnumNames& names, const QString& name) {
  const auto isMeant = [&, end = QLatin1String("::") + name](const EnumName& e) {
    return e.name == name || e.name.endsWith(end) || (e.anyCase && e.name.compare(name, Qt::CaseInsensitive) == 0);
  };
  const auto found = std::find_if(names.begin(), names.end(), isMeant);
  return found == names.end() ? nullptr : &*found;
}

/// The name of a value, or null. Yosys keeps one name a value.
inline const EnumName* findEnumValue(const EnumNames& names, const QByteArray& bits) {
  const auto found = std::find_if(names.begin(), names.end(), [&](const EnumName& e) { return e.bits == bits; });
  return found == names.end() ? nullptr : &*found;
}

}  // namespace ost

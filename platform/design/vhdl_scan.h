// A light look at VHDL text: the entities it declares, for what must be known before GHDL elaborates one of them.
#pragma once

#include <QByteArray>
#include <QList>
#include <QSet>

namespace ost {

struct VhdlGeneric {
  QByteArray name;  ///< As spelt.
  QByteArray type;  ///< In lower case, with its range, blanks reduced to one.
};

struct VhdlEntity {
  QByteArray name;              ///< As spelt.
  QByteArray library = "work";  ///< Set by who knows it.
  QList<VhdlGeneric> generics;
  QList<QByteArray> ports;  ///< As spelt.
};

struct VhdlScan {
  QList<VhdlEntity> entities;
  QSet<QByteArray> words;     ///< Every identifier that stands behind a colon, "component" or a dot, in lower case.
  QSet<QByteArray> likeGhdl;  ///< Every identifier that isGhdlName(), in lower case.
};

/// Adds what a text declares. Entities of a text that is not VHDL are simply not found.
void scanVhdl(const QByteArray& text, VhdlScan& scan);

}  // namespace ost

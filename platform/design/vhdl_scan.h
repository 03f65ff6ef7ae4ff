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

/// "type NAME is (IDLE, RUN);" of an entity's architecture, or of a package.
struct VhdlEnum {
  QByteArray name, entity;   ///< In lower case; `entity` is empty for a package.
  QList<QByteArray> values;  ///< As spelt, in the order of their positions.
};

/// A port or signal whose type has a name and no range.
struct VhdlSignal {
  QByteArray entity, name, type;  ///< In lower case, the type without the packages before it.
};

struct VhdlScan {
  QList<VhdlEntity> entities;
  QList<VhdlEnum> enums;
  QList<VhdlSignal> signalsOfType;
  QSet<QByteArray> words;     ///< Every identifier that stands behind a colon, "component" or a dot, in lower case.
  QSet<QByteArray> likeGhdl;  ///< Every identifier that isGhdlName(), in lower case.
};

/// Adds what a text declares. Entities of a text that is not VHDL are simply not found.
void scanVhdl(const QByteArray& text, VhdlScan& scan);

}  // namespace ost

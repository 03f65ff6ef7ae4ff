// How modules that nothing declares are used: their instances with parameters and ports, and what follows from the nets
// there about the direction of each port.
#pragma once

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

#include "platform/design/parameter.h"

namespace ost {

/// What the nets at one port of one instance tell.
enum class PortEvidence {
  None,      ///< Not connected.
  Driven,    ///< Something else drives them, or they are constant: an input.
  Undriven,  ///< Nothing else drives them: an output.
  Shared,    ///< Nothing drives them but ports of other unknown instances.
  Pad        ///< They meet an inout of the module or of another instance.
};

struct UnknownPort {
  int width = 0;
  PortEvidence evidence = PortEvidence::None;
};

struct UnknownUse {
  QByteArray module;  ///< Yosys' key of the module that holds the instance.
  QByteArray cell, type;
  QMap<QByteArray, ParameterValue> parameters;  ///< "$1" and so on where they were given by position.
  QMap<QByteArray, UnknownPort> ports;          ///< The same.
};

/// Reads the instances of `types` in a Yosys netlist after `proc`. False for a text that is none.
bool readUnknownUses(const QByteArray& json, const QList<QByteArray>& types, QList<UnknownUse>& uses);

/// A declaration of the type as a black box, Verilog, out of all its uses. What is doubtful is added to `notes`, a
/// sentence each. Empty, with such a sentence, when ports are connected by position: their names are not known then.
QByteArray boxDeclaration(const QByteArray& type, const QList<UnknownUse>& uses, QStringList& notes);

}  // namespace ost

// VHDL through GHDL: one entity with its generics becomes Verilog modules, named so that they can stand beside others.
#pragma once

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QSet>
#include <QString>
#include <functional>

#include "platform/design/front_end.h"
#include "platform/design/vhdl_scan.h"

namespace ost {

/// The attribute that marks a module as one that came from VHDL, whose names have no case.
constexpr const char* kVhdlAttribute = "ostrel_vhdl";

struct VhdlFile {
  QByteArray library;  ///< "work" unless another was named.
  QString file;        ///< Absolute.
};

struct VhdlSources {
  QString standard = QStringLiteral("08");  ///< 87, 93, 02 or 08.
  QList<VhdlFile> files;                    ///< In the order of analysis.
  VhdlScan scan;

  /// The entity of that name, in any case, or null.
  const VhdlEntity* find(const QByteArray& name) const;
};

/// A module that GHDL wrote.
struct VhdlModule {
  QByteArray name, text;
  bool component = false;  ///< A component without an entity: ports and parameters only.
};

/// Elaborates an entity with the generics that are given by name. The top module comes last and has the entity's name
/// as spelt in its declaration. False with GHDL's error, with its file and line.
bool synthesiseVhdl(const VhdlSources& sources, const VhdlEntity& entity, const QMap<QByteArray, QByteArray>& generics,
                    const ToolLimits& limits, QList<VhdlModule>& modules, QString& error);

/// Gives the module another name, in its own text.
void renameModule(VhdlModule& module, const QByteArray& name);
/// Makes the instances of `type` in the text instances of `name`, whose ports and parameters are spelt as in `words`.
void renameInstances(VhdlModule& module, const QByteArray& type, const QByteArray& name, const QSet<QByteArray>& words);
/// Spells the ports of the module as in `ports`, which differ in case only.
void spellPorts(VhdlModule& module, const QList<QByteArray>& ports);
/// The component as a declaration that Verilog tools take.
QByteArray componentDeclaration(const VhdlModule& component);

}  // namespace ost

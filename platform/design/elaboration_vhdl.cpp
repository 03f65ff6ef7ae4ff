// VHDL within a reading: GHDL elaborates an entity once for each set of generics and each spelling of its ports, and
// the instances in Verilog become instances of what it wrote.
#include <algorithm>

#include "platform/design/elaboration.h"
#include "platform/design/own_names.h"
#include "platform/text/byte_text.h"

namespace ost {

bool Elaboration::addVhdlTop(QString& error) {
  const VhdlEntity* entity = plan_.vhdl().find(plan_.top());
  if (!entity) return true;
  QMap<QByteArray, QByteArray> generics;
  for (const TopParameter& parameter : plan_.parameters()) {
    const VhdlGeneric* generic = nullptr;
    for (const VhdlGeneric& one : entity->generics)
      if (one.name.toLower() == parameter.name.toLower()) generic = &one;
    if (!generic || !genericText(parameter.value, generic->type, generics[parameter.name])) {
      error = QStringLiteral("The generic \"%2\" of the top entity \"%1\" %3; correct -param.")
                  .arg(textFromBytes(entity->name), textFromBytes(parameter.name),
                       generic ? QStringLiteral("cannot have this value") : QStringLiteral("does not exist"));
      return false;
    }
  }
  QByteArray verilog;
  names_.remove(entity->name);
  return synthesise(*entity, generics, freeName(entity->name), entity->ports, verilog, error) &&
         plan_.addVhdl(verilog, entity->name, {}, error);
}

/// Elaborates the entity as a module of that name, and adds it and what it uses to `verilog`.
bool Elaboration::synthesise(const VhdlEntity& entity, const QMap<QByteArray, QByteArray>& generics,
                             const QByteArray& name, const QList<QByteArray>& ports, QByteArray& verilog,
                             QString& error) {
  QList<VhdlModule> modules;
  if (!synthesiseVhdl(plan_.vhdl(), entity, generics, limits(), modules, error)) {
    error = textFromBytes(plan_.inUsersWords(error.toLatin1()));
    return false;
  }
  QList<VhdlModule> written;
  const auto renameAll = [&modules](const QByteArray& from, const QByteArray& to, const QSet<QByteArray>& words) {
    for (VhdlModule& module : modules) renameInstances(module, from, to, words);
  };
  for (int i = 0; i < modules.size(); ++i) {
    if (modules[i].component) {
      // Verilog spells as it likes what VHDL takes in any case.
      const QByteArray from = modules[i].name;
      for (const ScannedModule& known : plan_.modules()) {
        if (known.name.toLower() != from.toLower()) continue;
        renameAll(from, known.name, known.ports);
        break;
      }
      components_.insert(from, componentDeclaration(modules[i]));
      continue;
    }
    const bool last = i + 1 == modules.size();
    const QByteArray from = modules[i].name, to = last ? name : freeName(from);
    if (to != from) renameAll(from, to, {});
    if (to != from) renameModule(modules[i], to);
    if (last) spellPorts(modules[i], ports);
  }
  for (const VhdlModule& module : qAsConst(modules))
    if (!module.component) verilog += QByteArray("(* ") + kVhdlAttribute + " *)\n" + module.text;
  return true;
}

/// The modules of the entities, bound to the instances of these types.
bool Elaboration::addEntities(const QVector<QByteArray>& types, const QList<UnknownUse>& uses, QString& error) {
  QList<VhdlBinding> bindings;
  QByteArray verilog;
  for (const QByteArray& type : types) {
    QList<UnknownUse> ofType;
    for (const UnknownUse& use : uses)
      if (use.type == type) ofType.append(use);
    if (!bindVhdl(*plan_.vhdl().find(type), ofType, bindings, verilog, error)) return false;
  }
  return types.isEmpty() || plan_.addVhdl(verilog, types.first(), bindings, error);
}

/// What an instance sets, by name or by place, as generics of the entity.
bool Elaboration::readGenerics(const VhdlEntity& entity, const UnknownUse& use, QMap<QByteArray, QByteArray>& generics,
                               QString& error) const {
  for (auto given = use.parameters.begin(); given != use.parameters.end(); ++given) {
    const VhdlGeneric* generic = nullptr;
    for (int i = 0; i < entity.generics.size(); ++i)
      if (entity.generics[i].name.toLower() == given.key().toLower() || given.key() == '$' + QByteArray::number(i + 1))
        generic = &entity.generics[i];
    if (generic && genericText(*given, generic->type, generics[generic->name])) continue;
    error = QStringLiteral("The instance \"%1\" of module \"%2\" sets \"%3\" of the VHDL entity \"%4\", %5.")
                .arg(textFromBytes(use.cell), textFromBytes(sourceName(use.module)), textFromBytes(given.key()),
                     textFromBytes(entity.name),
                     generic ? QStringLiteral("which cannot have this value; set it in the VHDL source")
                             : QStringLiteral("which has no such generic; correct the name"));
    return false;
  }
  return true;
}

/// One module for each set of generics and each spelling of the ports; the instances become instances of these.
bool Elaboration::bindVhdl(const VhdlEntity& entity, const QList<UnknownUse>& uses, QList<VhdlBinding>& bindings,
                           QByteArray& verilog, QString& error) {
  QHash<QByteArray, QByteArray> known;  // What tells versions apart -> module.
  for (const UnknownUse& use : uses) {
    QMap<QByteArray, QByteArray> generics;
    if (!readGenerics(entity, use, generics, error)) return false;
    QList<QByteArray> ports = entity.ports;
    QByteArray key;
    for (QByteArray& port : ports) {
      for (auto used = use.ports.begin(); used != use.ports.end(); ++used)
        if (used.key().toLower() == port.toLower()) port = used.key();
      key += port + ',';
    }
    for (auto generic = generics.begin(); generic != generics.end(); ++generic)
      key += generic.key() + '=' + generic.value() + '\n';
    if (!known.contains(key)) {
      known.insert(key, freeName(entity.name));
      if (!synthesise(entity, generics, known.value(key), ports, verilog, error)) return false;
    }
    bindings.append({use.module, use.cell, known.value(key), use.parameters.keys()});
  }
  return true;
}

/// Nets of modules from VHDL that GHDL named, not the source.
void Elaboration::hideGhdlNets(NameIndex& index) const {
  const QSet<QByteArray>& spelt = plan_.vhdl().scan.likeGhdl;
  for (ModuleEntry& module : index.modules) {
    if (!module.vhdl) continue;
    const auto isGhdls = [&](const NetEntry& net) {
      return isGhdlName(index.view(net.name)) && !spelt.contains(index.bytes(net.name));
    };
    module.nets.erase(std::remove_if(module.nets.begin(), module.nets.end(), isGhdls), module.nets.end());
  }
}

}  // namespace ost

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

/// Enumerated types out of the texts, as GHDL's Verilog has none: it counts the values from 0.
void Elaboration::nameVhdlValues(NameIndex& index) const {
  const VhdlScan& scan = plan_.vhdl().scan;
  if (scan.enums.isEmpty()) return;
  for (ModuleEntry& module : index.modules) {
    if (!module.vhdl) continue;
    // A module of GHDL has the name of its entity, with more behind it where there are generics.
    const QByteArray key = sourceName(module.key).toLower();
    QByteArray entity;
    for (const VhdlEntity& known : scan.entities) {
      const QByteArray name = known.name.toLower();
      if ((key == name || key.startsWith(name + '_')) && name.size() > entity.size()) entity = name;
    }
    for (const VhdlSignal& signal : scan.signalsOfType) {
      if (signal.entity != entity || signal.type.isEmpty()) continue;
      const auto net = std::find_if(module.nets.begin(), module.nets.end(), [&](const NetEntry& one) {
        return index.bytes(one.name).toLower() == signal.name;
      });
      if (net != module.nets.end()) net->enumType = vhdlEnumType(signal, net->width, index);
    }
  }
}

/// The number of the signal's type among those of the index, added when it is new; -1 when it is no enumerated one, or
/// may be several. The type of the architecture hides that of a package.
int Elaboration::vhdlEnumType(const VhdlSignal& signal, int width, NameIndex& index) const {
  const VhdlEnum* type = nullptr;
  for (const VhdlEnum& one : plan_.vhdl().scan.enums) {
    if (one.name != signal.type || (one.entity != signal.entity && !one.entity.isEmpty())) continue;
    const bool hides = type && type->entity.isEmpty() && !one.entity.isEmpty();
    if (type && !hides && type->entity == one.entity && type->values != one.values) return -1;
    if (!type || hides) type = &one;
  }
  if (!type || width > 30 || type->values.size() > (1 << width) || type->values.size() <= (1 << (width - 1))) return -1;
  EnumNames names;
  for (int value = 0; value < type->values.size(); ++value) {
    QByteArray bits = QByteArray::number(value, 2).rightJustified(width, '0');
    std::reverse(bits.begin(), bits.end());
    names.append({textFromBytes(type->values[value]), bits, true});
  }
  const auto same = [&names](const EnumNames& known) {
    return std::equal(known.begin(), known.end(), names.begin(), names.end(), [](const EnumName& a, const EnumName& b) {
      return a.name == b.name && a.bits == b.bits && a.anyCase == b.anyCase;
    });
  };
  const auto known = std::find_if(index.enumTypes.begin(), index.enumTypes.end(), same);
  if (known == index.enumTypes.end()) index.enumTypes.push_back(names);
  return int(std::find_if(index.enumTypes.begin(), index.enumTypes.end(), same) - index.enumTypes.begin());
}

}  // namespace ost

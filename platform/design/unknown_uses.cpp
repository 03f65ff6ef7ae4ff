// Reads instances of unknown modules and infers their ports.
#include "platform/design/unknown_uses.h"

#include <QHash>
#include <QJsonArray>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSet>

#include "platform/text/byte_text.h"
#include "platform/text/json_text.h"

namespace ost {
namespace {

QByteArray keyBytes(const QString& key) {
  return key.toUtf8();
}

/// Who meets each bit of a module.
struct BitTable {
  QSet<int> driven, pads;
  QHash<int, int> unknownPorts;  ///< Ports of unknown instances at the bit.

  void add(const QJsonArray& bits, QSet<int>& set) const {
    for (const QJsonValue& bit : bits)
      if (bit.isDouble()) set.insert(bit.toInt());
  }
  BitTable(const QJsonObject& module, const QSet<QString>& types) {
    const QJsonObject ports = module.value(QStringLiteral("ports")).toObject();
    for (const QJsonValue& value : ports) {
      const QJsonObject port = value.toObject();
      const QString direction = port.value(QStringLiteral("direction")).toString();
      const QJsonArray bits = port.value(QStringLiteral("bits")).toArray();
      if (direction == QLatin1String("input")) add(bits, driven);
      if (direction == QLatin1String("inout")) add(bits, pads);
    }
    const QJsonObject cells = module.value(QStringLiteral("cells")).toObject();
    for (const QJsonValue& value : cells) {
      const QJsonObject cell = value.toObject();
      const QJsonObject directions = cell.value(QStringLiteral("port_directions")).toObject();
      const QJsonObject connections = cell.value(QStringLiteral("connections")).toObject();
      const bool unknown = types.contains(cell.value(QStringLiteral("type")).toString());
      for (auto at = connections.begin(); at != connections.end(); ++at) {
        const QJsonArray bits = at.value().toArray();
        const QString direction = directions.value(at.key()).toString();
        if (unknown) {
          QSet<int> met;
          add(bits, met);
          for (const int bit : qAsConst(met)) ++unknownPorts[bit];
        } else if (direction == QLatin1String("output")) {
          add(bits, driven);
        } else if (direction == QLatin1String("inout")) {
          add(bits, pads);
        }
      }
    }
  }

  PortEvidence evidence(const QJsonArray& bits) const {
    PortEvidence result = PortEvidence::None;
    for (const QJsonValue& value : bits) {
      const int bit = value.toInt(-1);
      const bool floats = value.toString() == QLatin1String("x") || value.toString() == QLatin1String("z");
      PortEvidence one = PortEvidence::Driven;
      if (floats)
        one = PortEvidence::None;
      else if (pads.contains(bit))
        one = PortEvidence::Pad;
      else if (bit >= 0 && !driven.contains(bit))
        one = unknownPorts.value(bit) > 1 ? PortEvidence::Shared : PortEvidence::Undriven;
      // One bit that something else drives makes the whole port an input.
      if (result == PortEvidence::None || one == PortEvidence::Driven) result = one;
      if (one == PortEvidence::Pad && result != PortEvidence::Driven) result = one;
    }
    return result;
  }
};

/// What an engineer would take the port for by its name: +1 an output, -1 an input, 0 either.
int directionByName(const QByteArray& name) {
  static const QRegularExpression output(
      QStringLiteral("OUT|\\A(O|Q|Y|Z|DO|LOCK(ED)?)[0-9]*\\z|_O\\z|O[0-9]*\\z|\\AO_|LOCKED|VALID|READY")),
      input(QStringLiteral("IN\\z|IN[0-9_]|\\A(I|D|A|B|C|S|R|T|CE|CLK|RST|RESET|EN|OE|DI)[0-9]*\\z|_I\\z|\\AI_|RST|"
                           "RESET|PWRDWN|PWRDN"));
  const QString upper = textFromBytes(name).toUpper();
  return int(output.match(upper).hasMatch()) - int(input.match(upper).hasMatch());
}

struct PortVotes {
  int width = 1;
  bool driven = false, undriven = false, shared = false, pad = false;
};

const char* decide(const QByteArray& name, const PortVotes& votes, bool& doubtful) {
  if (votes.driven) {
    doubtful = votes.undriven || votes.pad;
    return "input";
  }
  if (votes.pad) return "inout";
  if (votes.shared) {
    const int guess = directionByName(name);
    doubtful = guess == 0;
    return guess > 0 ? "output" : guess < 0 ? "input" : "inout";
  }
  doubtful = votes.undriven && directionByName(name) < 0;
  return votes.undriven ? "output" : "input";
}

QByteArray identifier(const QByteArray& name) {
  return '\\' + name + ' ';
}

}  // namespace

bool readUnknownUses(const QByteArray& json, const QList<QByteArray>& types, QList<UnknownUse>& uses) {
  QJsonValue netlist;
  JsonTextFault fault;
  if (!parseJson(json, netlist, fault)) return false;
  QSet<QString> wanted;
  for (const QByteArray& type : types) wanted.insert(QString::fromUtf8(type));
  const QJsonObject modules = netlist.toObject().value(QStringLiteral("modules")).toObject();
  for (auto at = modules.begin(); at != modules.end(); ++at) {
    const BitTable table(at.value().toObject(), wanted);
    const QJsonObject cells = at.value().toObject().value(QStringLiteral("cells")).toObject();
    for (auto one = cells.begin(); one != cells.end(); ++one) {
      const QJsonObject cell = one.value().toObject();
      UnknownUse use{
          keyBytes(at.key()), keyBytes(one.key()), keyBytes(cell.value(QStringLiteral("type")).toString()), {}, {}};
      if (!types.contains(use.type)) continue;
      const QJsonObject parameters = cell.value(QStringLiteral("parameters")).toObject();
      for (auto p = parameters.begin(); p != parameters.end(); ++p)
        use.parameters.insert(keyBytes(p.key()), netlistParameter(keyBytes(p.value().toString())));
      const QJsonObject ports = cell.value(QStringLiteral("connections")).toObject();
      for (auto p = ports.begin(); p != ports.end(); ++p) {
        const QJsonArray bits = p.value().toArray();
        use.ports.insert(keyBytes(p.key()), {int(bits.size()), table.evidence(bits)});
      }
      uses.append(use);
    }
  }
  return true;
}

QByteArray boxDeclaration(const QByteArray& type, const QList<UnknownUse>& uses, QStringList& notes) {
  QMap<QByteArray, PortVotes> ports;
  QSet<QByteArray> parameters;
  for (const UnknownUse& use : uses) {
    if (use.type != type) continue;
    for (auto p = use.parameters.begin(); p != use.parameters.end(); ++p) parameters.insert(p.key());
    for (auto p = use.ports.begin(); p != use.ports.end(); ++p) {
      if (p.key().startsWith('$')) {
        notes.append(
            QStringLiteral("The ports of the black box \"%1\" are connected by position, which leaves their directions "
                           "open: what it drives counts as undriven; connect them by name, or declare the module.")
                .arg(textFromBytes(type)));
        return QByteArray();
      }
      PortVotes& votes = ports[p.key()];
      votes.width = qMax(votes.width, p->width);
      votes.driven |= p->evidence == PortEvidence::Driven;
      votes.undriven |= p->evidence == PortEvidence::Undriven;
      votes.shared |= p->evidence == PortEvidence::Shared;
      votes.pad |= p->evidence == PortEvidence::Pad;
    }
  }
  QByteArray list, body;
  for (auto p = ports.begin(); p != ports.end(); ++p) {
    bool doubtful = false;
    const char* direction = decide(p.key(), *p, doubtful);
    list += (list.isEmpty() ? "" : ", ") + identifier(p.key());
    body +=
        QByteArray("  ") + direction + " [" + QByteArray::number(p->width - 1) + ":0] " + identifier(p.key()) + ";\n";
    if (doubtful)
      notes.append(QStringLiteral("The port \"%1\" of the black box \"%2\" is taken as an %3, which its use leaves in "
                                  "doubt; declare the module with its ports where that is wrong.")
                       .arg(textFromBytes(p.key()), textFromBytes(type), textFromBytes(direction)));
  }
  for (const QByteArray& name : parameters) body += "  parameter " + identifier(name) + " = 0;\n";
  return "(* blackbox *) module " + identifier(type) + "(" + list + ");\n" + body + "endmodule\n";
}

}  // namespace ost

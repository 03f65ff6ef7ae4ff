// Reads the outline of a netlist.
#include "platform/netlist/netlist_text.h"

#include "platform/design/name_index.h"

namespace ost {

QByteArray bitText(int bit) {
  switch (bit) {
    case kBitZ:
      return "\"z\"";
    case kBitX:
      return "\"x\"";
    case kBit0:
      return "\"0\"";
    case kBit1:
      return "\"1\"";
    default:
      return QByteArray::number(bit);
  }
}

QByteArray bitListText(const QVector<int>& bits) {
  QByteArray text = "[ ";
  for (int i = 0; i < bits.size(); ++i) {
    if (i) text += ", ";
    text += bitText(bits[i]);
  }
  return text + " ]";
}

bool readBits(JsonCursor& cursor, QVector<int>& bits) {
  bits.clear();
  if (!cursor.enterArray()) return false;
  while (cursor.nextElement()) {
    if (cursor.peek() == '"') {
      std::string_view word;
      cursor.readRawString(word);
      bits.append(word == "0" ? kBit0 : word == "1" ? kBit1 : word == "z" ? kBitZ : kBitX);
    } else {
      qint64 id = 0;
      // Ids are counted up, so a larger one cannot be right; tables by id would not fit into memory.
      if (!cursor.readInteger(id) || id < 2 || size_t(id) > cursor.textSize()) return cursor.refuse();
      bits.append(int(id));
    }
  }
  return cursor.ok();
}

NetlistPort::Direction portDirection(std::string_view word) {
  if (word == "output") return NetlistPort::Output;
  return word == "inout" ? NetlistPort::InOut : NetlistPort::Input;
}

bool NetlistText::readPorts(JsonCursor& cursor, NetlistModule& module) {
  std::string_view key, field, word;
  cursor.enterObject();
  while (cursor.nextMember(key)) {
    NetlistPort port;
    port.name = unescapeJson(key);
    cursor.enterObject();
    while (cursor.nextMember(field)) {
      if (field == "direction") {
        cursor.readRawString(word);
        port.direction = portDirection(word);
      } else if (field == "bits") {
        port.bitsSpan.begin = cursor.valueStart();
        readBits(cursor, port.bits);
        port.bitsSpan.end = cursor.position();
      } else {
        cursor.skipValue();
      }
    }
    module.portList.push_back(std::move(port));
  }
  return cursor.ok();
}

bool NetlistText::readInstances(JsonCursor& cursor, NetlistModule& module) {
  std::string_view key, field, type;
  cursor.enterObject();
  while (cursor.nextMember(key)) {
    const size_t start = cursor.valueStart();
    cursor.enterObject();
    while (cursor.nextMember(field)) {
      if (field != "type") {
        cursor.skipValue();
        continue;
      }
      cursor.readRawString(type);
      // Yosys' own cells begin with "$" as do the modules that it derived from parameters.
      if (!type.empty() && type[0] == '$' && type.substr(0, 8) != "$paramod") continue;
      NetlistInstance instance;
      instance.name = unescapeJson(key);
      instance.type = unescapeJson(type);
      instance.cell = start;
      module.instanceByName.insert(instance.name, int(module.instances.size()));
      module.instances.push_back(std::move(instance));
    }
  }
  return cursor.ok();
}

bool NetlistText::readModule(JsonCursor& cursor, NetlistModule& module) {
  std::string_view key, name;
  module.body = cursor.valueStart();
  cursor.enterObject();
  while (cursor.nextMember(key)) {
    const size_t start = cursor.valueStart();
    if (key == "ports") {
      module.ports = start;
      readPorts(cursor, module);
    } else if (key == "cells") {
      module.cells = start;
      readInstances(cursor, module);
    } else if (key == "attributes") {
      module.attributes = start;
      cursor.enterObject();
      while (cursor.nextMember(name)) {
        if ((name == "blackbox" || name == "whitebox") && cursor.peek() == '"') {
          QByteArray value;
          cursor.readString(value);
          module.blackBox |= isSetAttribute(std::string_view(value.constData(), size_t(value.size())));
          continue;
        }
        cursor.skipValue();
      }
    } else {
      if (key == "netnames") module.netNames = start;
      if (key == "memories") module.memories = start;
      cursor.skipValue();
    }
  }
  module.text.end = cursor.position();
  return cursor.ok();
}

bool NetlistText::open(int file, const QByteArray& topKey, QString& error) {
  const uchar* data = nullptr;
  if (file_.open(file, QIODevice::ReadOnly, QFileDevice::DontCloseHandle) && file_.size() > 0)
    data = file_.map(0, file_.size());
  if (!data) {
    error = QStringLiteral("Yosys wrote no netlist; is the folder for temporary files full?");
    return false;
  }
  text_ = std::string_view(reinterpret_cast<const char*>(data), size_t(file_.size()));

  JsonCursor cursor(text_);
  std::string_view key, name;
  cursor.enterObject();
  while (cursor.nextMember(key)) {
    if (key != "modules") {
      cursor.skipValue();
      continue;
    }
    modulesBody_ = cursor.valueStart();
    cursor.enterObject();
    while (cursor.nextMember(name)) {
      NetlistModule module;
      module.name = unescapeJson(name);
      module.text.begin = size_t(name.data() - text_.data()) - 1;
      readModule(cursor, module);
      moduleByName_.insert(module.name, int(modules_.size()));
      modules_.push_back(std::move(module));
    }
  }
  if (!cursor.ok()) {
    error = QStringLiteral("The netlist that Yosys wrote is damaged; is the folder for temporary files full?");
    return false;
  }
  for (NetlistModule& module : modules_)
    for (NetlistInstance& instance : module.instances) instance.module = find(instance.type);
  top_ = find(topKey);
  if (top_ < 0) {
    error = QStringLiteral("The netlist has no module \"%1\".").arg(QString::fromLatin1(topKey));
    return false;
  }
  return true;
}

}  // namespace ost

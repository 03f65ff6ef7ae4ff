// Names and paths of the hierarchy as text that leads back to what they name.
#include "platform/design/name_index.h"
#include "platform/text/byte_text.h"

namespace ost {

QByteArray componentText(std::string_view name, bool escaped) {
  const QByteArray plain(name.data(), static_cast<int>(name.size()));
  return escaped ? '\\' + plain + ' ' : plain;
}

QByteArray joinPath(const NameIndex& index, const std::vector<const InstanceEntry*>& path) {
  QByteArray joined;
  for (const InstanceEntry* instance : path) {
    const std::string_view name = index.view(instance->name);
    const bool escaped = index.slashNames && (name.find('/') != std::string_view::npos || name[0] == '\\');
    if (!joined.isEmpty()) joined += '/';
    joined += componentText(name, escaped);
  }
  return joined;
}

QByteArray fullName(const NameIndex& index, const NameHit& hit, const QByteArray& select) {
  const std::string_view net = index.view(hit.net->name);
  QByteArray plain;
  const auto append = [&plain](std::string_view text) { plain.append(text.data(), int(text.size())); };
  for (const InstanceEntry* instance : hit.path) {
    append(index.view(instance->name));
    plain += '/';
  }
  append(net);
  plain += select;
  if (!index.slashNames) {
    // Without '/' in names only a net that spells its brackets itself can stand in the way.
    if (select.isEmpty()) return plain;
    const std::string spelt = std::string(net) + select.toStdString();
    if (!index.findNet(*hit.module, spelt)) return plain;
  } else {
    NameHit back;
    if (findName(index, std::string_view(plain.constData(), size_t(plain.size())), back, nullptr) &&
        back.net == hit.net && back.path == hit.path && back.selected == !select.isEmpty()) {
      return plain;
    }
  }
  QByteArray escaped;
  for (const InstanceEntry* instance : hit.path) escaped += componentText(index.view(instance->name), true) + '/';
  return escaped + componentText(net, true) + select;
}

QStringList instancePathKeys(const QString& instancePath) {
  QStringList keys;
  const QByteArray path = instancePath.toLatin1();
  for (int at = 0; at < path.size();) {
    const bool escaped = path[at] == '\\';
    const int end = path.indexOf(escaped ? ' ' : '/', at);
    const QByteArray name = path.mid(at + escaped, (end < 0 ? path.size() : end) - at - escaped);
    keys.append(textFromBytes(yosysKey(std::string_view(name.constData(), size_t(name.size())))));
    at = end < 0 ? path.size() : end + 1 + escaped;
  }
  return keys;
}

}  // namespace ost

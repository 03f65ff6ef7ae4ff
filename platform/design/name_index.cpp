// The index of names once it is read: order, top module, hierarchy and counts.
#include "platform/design/name_index.h"

#include <algorithm>
#include <limits>

#include "platform/text/byte_text.h"

namespace ost {
namespace {

qint64 addSaturating(qint64 a, qint64 b) {
  return a > std::numeric_limits<qint64>::max() - b ? std::numeric_limits<qint64>::max() : a + b;
}

QString quoted(const QByteArray& name) {
  return QLatin1Char('"') + textFromBytes(name) + QLatin1Char('"');
}

bool sameInVhdl(std::string_view a, std::string_view b) {
  return a.size() == b.size() && qstrnicmp(a.data(), b.data(), uint(a.size())) == 0;
}

/// The entry of that name; in a module from VHDL, in whatever case.
template <typename Entry>
const Entry* findByName(const NameIndex& index, const std::vector<Entry>& entries, bool vhdl, std::string_view name) {
  const auto place = std::lower_bound(entries.begin(), entries.end(), name,
                                      [&](const Entry& e, std::string_view n) { return index.view(e.name) < n; });
  if (place != entries.end() && index.view(place->name) == name) return &*place;
  if (!vhdl) return nullptr;
  for (const Entry& entry : entries)
    if (sameInVhdl(index.view(entry.name), name)) return &entry;
  return nullptr;
}

}  // namespace

QByteArray yosysKey(std::string_view name) {
  const QByteArray bytes(name.data(), static_cast<int>(name.size()));
  const char first = name.empty() ? 'a' : name[0];
  return first == '$' || first == '\\' || (first >= '0' && first <= '9') ? '\\' + bytes : bytes;
}

QByteArray yosysId(const QByteArray& key) {
  return key.startsWith('\\') || key.startsWith('$') ? key : '\\' + key;
}

QByteArray sourceName(const QByteArray& moduleKey) {
  if (moduleKey.startsWith('\\')) return moduleKey.mid(1);
  // "$paramod\name\W=..." or "$paramod$0123456789abcdef\name"
  const int name = moduleKey.startsWith("$paramod") ? moduleKey.indexOf('\\') + 1 : 0;
  const int end = name > 0 && moduleKey.startsWith("$paramod\\") ? moduleKey.indexOf('\\', name) : -1;
  return moduleKey.mid(name, end < 0 ? -1 : end - name);
}

bool isSetAttribute(std::string_view text) {
  // A number stands as its binary digits; every other text is a string.
  const bool number = text.find_first_not_of("01xz") == std::string_view::npos;
  return number ? text.find('1') != std::string_view::npos : true;
}

const NetEntry* NameIndex::findNet(const ModuleEntry& module, std::string_view name) const {
  return findByName(*this, module.nets, module.vhdl, name);
}

const InstanceEntry* NameIndex::findInstance(const ModuleEntry& module, std::string_view name) const {
  return findByName(*this, module.instances, module.vhdl, name);
}

bool NameIndex::hasMemory(const ModuleEntry& module, std::string_view name) const {
  const auto before = [this](NameRef ref, std::string_view n) { return view(ref) < n; };
  const auto place = std::lower_bound(module.memories.begin(), module.memories.end(), name, before);
  return place != module.memories.end() && view(*place) == name;
}

bool NameIndex::complete(const QByteArray& wantedTop, QString& error) {
  const auto byName = [this](const auto& a, const auto& b) { return view(a.name) < view(b.name); };
  const auto same = [this](const auto& a, const auto& b) { return view(a.name) == view(b.name); };
  for (ModuleEntry& module : modules) {
    if (module.bodyless) {
      module.nets = {};
      module.instances = {};
      module.memories = {};
    }
    std::sort(module.nets.begin(), module.nets.end(), byName);
    std::sort(module.instances.begin(), module.instances.end(), byName);
    std::sort(module.memories.begin(), module.memories.end(),
              [this](NameRef a, NameRef b) { return view(a) < view(b); });
    const auto twice = std::adjacent_find(module.nets.begin(), module.nets.end(), same);
    if (twice != module.nets.end()) {
      error =
          QStringLiteral("The module %1 declares the net %2 twice").arg(quoted(module.key), quoted(bytes(twice->name)));
      return false;
    }
    const auto again = std::adjacent_find(module.instances.begin(), module.instances.end(), same);
    if (again != module.instances.end()) {
      error = QStringLiteral("The module %1 holds the instance %2 twice")
                  .arg(quoted(module.key), quoted(bytes(again->name)));
      return false;
    }
  }
  return chooseTop(wantedTop, error) && count(error);
}

bool NameIndex::chooseTop(const QByteArray& wantedTop, QString& error) {
  std::vector<bool> instantiated(modules.size(), false);
  for (const ModuleEntry& module : modules) {
    for (const InstanceEntry& instance : module.instances) instantiated[size_t(instance.module)] = true;
  }
  QVector<int> marked, roots;
  for (size_t i = 0; i < modules.size(); ++i) {
    const ModuleEntry& module = modules[i];
    if (!wantedTop.isEmpty() &&
        (module.key == wantedTop ||
         module.key == yosysKey(std::string_view(wantedTop.constData(), size_t(wantedTop.size()))))) {
      top = int(i);
      return true;
    }
    if (module.topAttribute) marked.append(int(i));
    if (!instantiated[i] && !module.bodyless) roots.append(int(i));
  }
  if (!wantedTop.isEmpty()) {
    error = QStringLiteral("The design has no module %1 to be the top; name another with -top").arg(quoted(wantedTop));
    return false;
  }
  const QVector<int>& choice = marked.isEmpty() ? roots : marked;
  if (choice.size() != 1) {
    QStringList names;
    for (const int i : choice.mid(0, 5)) names.append(quoted(modules[size_t(i)].key));
    error = choice.isEmpty() ? QStringLiteral("The design has no top module; name one with -top")
                             : QStringLiteral(
                                   "The design has %1 modules that could be the top (%2); name one with "
                                   "-top")
                                   .arg(choice.size())
                                   .arg(names.join(QLatin1String(", ")));
    return false;
  }
  top = choice.first();
  return true;
}

bool NameIndex::count(QString& error) {
  // Depth first without recursion; `state`: 0 unseen, 1 on the way down, 2 counted.
  std::vector<char> state(modules.size(), 0);
  std::vector<std::pair<int, size_t>> stack{{top, 0}};
  std::vector<int> height(modules.size(), 1);
  state[size_t(top)] = 1;
  while (!stack.empty()) {
    const int number = stack.back().first;
    ModuleEntry& module = modules[size_t(number)];
    if (stack.back().second < module.instances.size()) {
      const InstanceEntry& instance = module.instances[stack.back().second++];
      const size_t child = size_t(instance.module);
      if (state[child] == 1) {
        error = QStringLiteral("The module %1 contains itself, through its instance %2")
                    .arg(quoted(modules[child].key), quoted(bytes(instance.name)));
        return false;
      }
      if (state[child] == 0) {
        state[child] = 1;
        stack.emplace_back(int(child), 0);
      }
      continue;
    }
    module.used = true;
    module.netsBelow = qint64(module.nets.size());
    for (const NetEntry& net : module.nets) module.bitsBelow += net.width;
    for (const InstanceEntry& instance : module.instances) {
      const ModuleEntry& child = modules[size_t(instance.module)];
      module.netsBelow = addSaturating(module.netsBelow, child.netsBelow);
      module.bitsBelow = addSaturating(module.bitsBelow, child.bitsBelow);
      module.instancesBelow = addSaturating(module.instancesBelow, addSaturating(child.instancesBelow, 1));
      height[size_t(number)] = std::max(height[size_t(number)], height[size_t(instance.module)] + 1);
    }
    if (height[size_t(number)] > kMaxDepth) {
      error =
          QStringLiteral("The hierarchy is deeper than %1 levels, at module %2").arg(kMaxDepth).arg(quoted(module.key));
      return false;
    }
    state[size_t(number)] = 2;
    stack.pop_back();
  }

  // Breadth first: one shortest path to each module, for naming what lies in it.
  std::vector<int> queue{top};
  std::vector<bool> seen(modules.size(), false);
  seen[size_t(top)] = true;
  for (size_t at = 0; at < queue.size(); ++at) {
    const ModuleEntry& module = modules[size_t(queue[at])];
    for (size_t i = 0; i < module.instances.size(); ++i) {
      const int child = module.instances[i].module;
      if (seen[size_t(child)]) continue;
      seen[size_t(child)] = true;
      modules[size_t(child)].parent = queue[at];
      modules[size_t(child)].parentInstance = int(i);
      queue.push_back(child);
    }
  }
  return true;
}

}  // namespace ost

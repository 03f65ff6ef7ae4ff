// Goes through the hierarchy and makes names.
#include "platform/design/list_nets.h"

#include <QHash>
#include <algorithm>

#include "platform/text/byte_text.h"

namespace ost {
namespace {

/// What the nets and instances of one module are called; empty for a module in which Yosys named no block.
struct ShownNames {
  std::vector<QByteArray> nets, instances;
};

/// Short forms of the entries' names where they are unambiguous.
template <class Entry, class IsWhole>
std::vector<QByteArray> shortNames(const NameIndex& index, const std::vector<Entry>& entries, IsWhole isWhole) {
  QHash<QByteArray, int> uses;
  std::vector<QByteArray> names;
  for (const Entry& entry : entries) {
    const QByteArray kept = index.bytes(entry.name);
    names.push_back(isWhole(entry) ? kept : nameWithoutLevels(kept));
    ++uses[names.back()];
  }
  for (size_t i = 0; i < names.size(); ++i)
    if (uses.value(names[i]) > 1) names[i] = index.bytes(entries[i].name);
  return names;
}

class Lister {
 public:
  Lister(const NameIndex& index, const std::function<bool(const NetName&)>& visit) : index_(index), visit_(visit) {}
  void run();

 private:
  const ShownNames& shown(const ModuleEntry& module);
  bool visitNets(const ModuleEntry& module);
  void append(const ModuleEntry& module, size_t instance);

  struct Level {
    const ModuleEntry* module;
    size_t nextInstance;
    int length;  ///< Of the path to it.
  };
  const NameIndex& index_;
  const std::function<bool(const NetName&)>& visit_;
  QHash<const ModuleEntry*, ShownNames> shown_;
  NameHit hit_;
  QByteArray path_;
};

const ShownNames& Lister::shown(const ModuleEntry& module) {
  const auto known = shown_.constFind(&module);
  if (known != shown_.constEnd()) return *known;
  ShownNames names;
  if (module.unnamedBlocks) {
    names.nets = shortNames(index_, module.nets, [](const NetEntry& net) { return net.wholeName; });
    names.instances = shortNames(index_, module.instances, [](const InstanceEntry&) { return false; });
  }
  return *shown_.insert(&module, names);
}

bool Lister::visitNets(const ModuleEntry& module) {
  hit_.module = &module;
  const ShownNames& names = shown(module);
  for (size_t i = 0; i < module.nets.size(); ++i) {
    const NetEntry& net = module.nets[i];
    hit_.net = &net;
    QByteArray name;
    if (index_.slashNames)
      name = fullName(index_, hit_, QByteArray());
    else
      name = path_ + (names.nets.empty() ? index_.bytes(net.name) : names.nets[i]);
    if (!visit_(NetName{textFromBytes(name), net.width})) return false;
  }
  return true;
}

void Lister::append(const ModuleEntry& module, size_t instance) {
  const ShownNames& names = shown(module);
  path_ += (names.instances.empty() ? index_.bytes(module.instances[instance].name) : names.instances[instance]) + '/';
}

void Lister::run() {
  const ModuleEntry& top = index_.modules[size_t(index_.top)];
  if (!visitNets(top)) return;
  std::vector<Level> stack{{&top, 0, 0}};
  while (!stack.empty()) {
    Level& level = stack.back();
    path_.truncate(level.length);
    if (level.nextInstance == level.module->instances.size()) {
      stack.pop_back();
      if (!hit_.path.empty()) hit_.path.pop_back();
      continue;
    }
    const size_t number = level.nextInstance++;
    const InstanceEntry& instance = level.module->instances[number];
    append(*level.module, number);
    hit_.path.push_back(&instance);
    const ModuleEntry& below = index_.modules[size_t(instance.module)];
    if (!visitNets(below)) return;
    stack.push_back({&below, 0, int(path_.size())});
  }
}

}  // namespace

QByteArray nameWithoutLevels(const QByteArray& kept) {
  const QList<QByteArray> levels = kept.split('.');
  const auto isUnnamed = [](const QByteArray& level) {
    if (!level.startsWith("genblk") || level.size() == 6) return false;
    return std::all_of(level.begin() + 6, level.end(), [](char c) { return c >= '0' && c <= '9'; });
  };
  QByteArray name;
  for (int i = 0; i < levels.size(); ++i) {
    int next = i;
    while (next + 1 < levels.size() && isUnnamed(levels[next])) ++next;
    if (next > i && next + 1 == levels.size()) name += levels[i] + '.';
    name += levels[next] + (next + 1 < levels.size() ? "." : "");
    i = next;
  }
  return name;
}

void listNets(const NameIndex& index, const std::function<bool(const NetName&)>& visit) {
  Lister(index, visit).run();
}

}  // namespace ost
